#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include "base/Utf8Cut.h"
#include "platform/NetworkApi.h"
#include "platform/ThreadPoolApi.h"
#include "quillon/NetworkUtils.h"
#include "quillon/WindowsSockets.h"

namespace quillon {

namespace {

/// A text that is empty until it is found out.
class Name {
public:
    const char* Text() const { return m_text.data(); }
    bool IsKnown() const { return m_text.front() != '\0'; }
    /// Cut to what fits, between characters.
    void Set(const std::string& text) {
        const std::string_view kept = base::CutUtf8(text, m_text.size() - 1);
        *std::copy(kept.begin(), kept.end(), m_text.begin()) = '\0';
    }

private:
    std::array<char, 255> m_text{};
};

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestSearch{10};
constexpr std::chrono::seconds kPauseBetweenSearches{60};

struct Names {
    std::mutex mutex;
    Name host, fqdn, domain;
    /// The search for the qualified name runs on a thread of its own, because name servers may be asked.
    bool isSearching = false;
    Clock::time_point searchEnds, nextSearch;
    std::condition_variable hasSearched;
};

/// Never destroyed: the texts live as long as the process.
Names& TheNames() {
    static Names& instance = *new Names;
    return instance;
}

bool IsKnown(const Name& name) {
    const std::lock_guard lock(TheNames().mutex);
    return name.IsKnown();
}

/// A failure is logged, and an entry may ask for a name: not under the names' mutex.
void StartSockets() { WindowsSockets::GetInstance()->InitializeSockets(); }

/// The mutex is held.
const Name& HostName(Names& names) {
    if (names.host.IsKnown()) return names.host;
    const std::string name = platform::HostName().value_or("unknown_host");
    names.host.Set(name.substr(0, name.find('.')));
    return names.host;
}

/// The mutex is not held, and nothing is logged: an entry may ask for the name that is searched.
platform::NameAnswer FindFqdn() {
    platform::NameAnswer own = platform::FullyQualifiedName();
    return own.mayComeLater || !own.name.value_or("").empty() ? own : platform::LoopbackName();
}

/// Stores what the search found: the host's name stands in when there is no other, but not for a name that
/// may come later.
void EndSearch(Names& names, const platform::NameAnswer& answer) {
    {
        const std::lock_guard lock(names.mutex);
        const std::string name = answer.name.value_or("");
        if (!answer.mayComeLater) names.fqdn.Set(name.empty() ? HostName(names).Text() : name);
        names.isSearching = false;
        names.nextSearch = Clock::now() + kPauseBetweenSearches;
    }
    names.hasSearched.notify_all();
}

/// Searches on a thread that nobody waits for in the end: what there is no memory for may come later.
void Search(Names& names) {
    try {
        EndSearch(names, FindFqdn());
    } catch (const std::bad_alloc&) {
        EndSearch(names, {.name = std::nullopt, .mayComeLater = true});
    }
}

/// Begins a search unless one runs, or the last one was a short while ago. The mutex is held by `lock`.
void BeginSearch(Names& names, std::unique_lock<std::mutex>& lock) {
    if (names.isSearching || Clock::now() < names.nextSearch) return;
    names.isSearching = true;
    names.searchEnds = Clock::now() + kLongestSearch;
    lock.unlock();
    bool hasStarted = false;
    try {
        hasStarted = platform::RunInBackground([&names] { Search(names); }, "fqdn");
    } catch (const std::bad_alloc&) {
        hasStarted = false;
    }
    if (!hasStarted) EndSearch(names, {.name = std::nullopt, .mayComeLater = true});
    lock.lock();
}

}  // namespace

const char* NetworkUtils::GetHostName() {
    Names& names = TheNames();
    if (IsKnown(names.host)) return names.host.Text();
    StartSockets();
    const std::lock_guard lock(names.mutex);
    return HostName(names).Text();
}

const char* NetworkUtils::GetFqdn() {
    Names& names = TheNames();
    if (IsKnown(names.fqdn)) return names.fqdn.Text();
    StartSockets();
    std::unique_lock lock(names.mutex);
    BeginSearch(names, lock);
    names.hasSearched.wait_until(lock, names.searchEnds, [&names] { return !names.isSearching; });
    return names.fqdn.IsKnown() ? names.fqdn.Text() : HostName(names).Text();
}

const char* NetworkUtils::GetDomainName() {
    Names& names = TheNames();
    if (IsKnown(names.domain)) return names.domain.Text();
    const std::string name = platform::FlatDomainName().value_or("(unknown)");
    const std::lock_guard lock(names.mutex);
    if (!names.domain.IsKnown()) names.domain.Set(name);
    return names.domain.Text();
}

}  // namespace quillon
