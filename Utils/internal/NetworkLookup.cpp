#include "Utils/internal/NetworkLookup.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

#include "base/Characters.h"
#include "base/Ipv4Text.h"
#include "base/OwnFigures.h"
#include "platform/ThreadPoolApi.h"

namespace quillon {

namespace {

using Deadline = std::chrono::steady_clock::time_point;
using platform::AddressQuery;

/// Holds one look-up that is under way. The mutex of Lookups guards everything but the query. The
/// system's look-up cannot be cancelled: when its askers have given up, it goes on alone, and the last
/// owner frees its result.
struct Lookup {
    explicit Lookup(const AddressQuery& question) : query(question) {}
    ~Lookup() { platform::FreeAddresses(result.list); }
    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;

    const AddressQuery query;
    int askers = 0;
    bool hasEnded = false;
    LookupResult result;
};
using SharedLookup = std::shared_ptr<Lookup>;

/// False for what the system answers by itself. A look-up of a service alone has no name.
bool AsksServer(const AddressQuery& query) {
    if (!query.node) return false;
    const std::string_view node = *query.node;
    if (base::EqualIgnoringCase(node, std::string_view("localhost"))) return false;
    if (base::ReadIpv4<base::Ipv4OfSystem>(node)) return false;
    return node.find(':') == std::string_view::npos;  // no name has a colon
}

struct Lookups {
    std::mutex mutex;
    std::condition_variable changed;
    LookupLimits limits;
    std::map<AddressQuery, SharedLookup> underWay;

    /// The mutex is held. Whether the query may begin, or share what has begun.
    [[nodiscard]] bool HasPlaceFor(const AddressQuery& query) const {
        if (underWay.contains(query) || !AsksServer(query)) return true;
        std::size_t awaited = 0, all = 0;
        for (const auto& [other, lookup] : underWay) {
            if (!AsksServer(other)) continue;
            ++all;
            awaited += lookup->askers > 0 ? 1 : 0;
        }
        return awaited < limits.awaited && all < limits.all;
    }
};

/// Never destroyed: a look-up may end while the process does.
Lookups& TheLookups() {
    static Lookups& instance = *new Lookups;
    return instance;
}

void End(Lookup& lookup, const LookupResult& result) {
    Lookups& all = TheLookups();
    {
        const std::lock_guard lock(all.mutex);
        lookup.result = result;
        lookup.hasEnded = true;
        all.underWay.erase(lookup.query);
        base::CountLookups(-1);
    }
    all.changed.notify_all();
}

void RunLookup(Lookup& lookup) {
    LookupResult result;
    result.code = platform::ResolveAddresses(lookup.query, result.list);
    End(lookup, result);
}

void Start(const SharedLookup& lookup) {
    base::CountLookups(1);
    bool hasStarted = false;
    try {
        hasStarted = platform::RunInBackground([lookup] { RunLookup(*lookup); }, "lookup");
    } catch (const std::bad_alloc&) {
        hasStarted = false;
    }
    if (!hasStarted) End(*lookup, {.code = platform::TryAgainCode()});
}

/// Joins a look-up of the same query or starts one; null when there is no place for one before the
/// deadline. It is started after the mutex is released, as End() takes it again when that fails.
SharedLookup Join(const AddressQuery& query, Deadline deadline) {
    Lookups& all = TheLookups();
    std::unique_lock lock(all.mutex);
    if (!all.changed.wait_until(lock, deadline, [&] { return all.HasPlaceFor(query); })) return nullptr;
    if (const auto found = all.underWay.find(query); found != all.underWay.end()) {
        ++found->second->askers;
        return found->second;
    }
    const auto lookup = std::make_shared<Lookup>(query);
    all.underWay.emplace(query, lookup);
    ++lookup->askers;
    lock.unlock();
    Start(lookup);
    return lookup;
}

/// Waits for the answer, and takes it or gives up.
LookupResult Await(Lookups& all, Lookup& lookup, Deadline deadline) {
    std::unique_lock lock(all.mutex);
    const bool hasEnded = all.changed.wait_until(lock, deadline, [&] { return lookup.hasEnded; });
    const bool isLast = --lookup.askers == 0;
    LookupResult& result = lookup.result;
    if (!hasEnded) return {.end = LookupResult::End::TimedOut};
    if (!isLast) return {.code = result.code, .list = platform::CopyAddresses(result.list)};
    return {.code = result.code, .list = std::exchange(result.list, nullptr)};
}

}  // namespace

void SetLookupLimits(const LookupLimits& limits) {
    Lookups& all = TheLookups();
    {
        const std::lock_guard lock(all.mutex);
        all.limits = limits;
    }
    all.changed.notify_all();
}

LookupResult LookUp(const AddressQuery& query, Deadline deadline) {
    const SharedLookup lookup = Join(query, deadline);
    if (lookup == nullptr) return {.end = LookupResult::End::NotStarted};
    Lookups& all = TheLookups();
    const LookupResult result = Await(all, *lookup, deadline);
    if (result.end == LookupResult::End::TimedOut) all.changed.notify_all();  // its place may be free
    return result;
}

}  // namespace quillon
