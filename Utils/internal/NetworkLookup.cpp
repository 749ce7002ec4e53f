#include "Utils/internal/NetworkLookup.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "base/OwnFigures.h"
#include "platform/ThreadPoolApi.h"

namespace quillon {

namespace {

using Deadline = std::chrono::steady_clock::time_point;
using platform::AddressQuery;

/// All but the query is guarded by the mutex of Lookups. The last of its askers and
/// its task frees what nobody took.
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

struct Lookups {
    std::mutex mutex;
    std::condition_variable changed;
    std::map<AddressQuery, SharedLookup> underWay;
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
        hasStarted = platform::RunInBackground([lookup] { RunLookup(*lookup); });
    } catch (const std::bad_alloc&) {
        hasStarted = false;
    }
    if (!hasStarted) End(*lookup, {platform::TryAgainCode()});
}

/// Null when there is no place before the deadline.
SharedLookup Join(const AddressQuery& query, Deadline deadline) {
    Lookups& all = TheLookups();
    std::unique_lock lock(all.mutex);
    const auto hasPlace = [&] { return all.underWay.size() < kMostLookups || all.underWay.contains(query); };
    if (!all.changed.wait_until(lock, deadline, hasPlace)) return nullptr;
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

}  // namespace

std::optional<LookupResult> LookUp(const AddressQuery& query, Deadline deadline) {
    const SharedLookup lookup = Join(query, deadline);
    if (lookup == nullptr) return std::nullopt;
    Lookups& all = TheLookups();
    std::unique_lock lock(all.mutex);
    const bool hasEnded = all.changed.wait_until(lock, deadline, [&] { return lookup->hasEnded; });
    const bool isLast = --lookup->askers == 0;
    if (!hasEnded) return std::nullopt;
    LookupResult& result = lookup->result;
    if (!isLast) return LookupResult{result.code, platform::CopyAddresses(result.list), true};
    return LookupResult{result.code, std::exchange(result.list, nullptr), false};
}

}  // namespace quillon
