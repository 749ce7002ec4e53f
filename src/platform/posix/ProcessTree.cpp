#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/ProcessApi.h"
#include "platform/native/ProcFile.h"
#include "platform/native/ProcessStat.h"
#include "platform/posix/Children.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FolderEntry.h"

namespace quillon::platform {

namespace {

/// A tree that forks faster than it is stopped is killed as far as it was found by then.
constexpr std::chrono::milliseconds kStopLimit{10'000};
constexpr std::chrono::milliseconds kRoundPause{1};
/// A chain whose links fork and end may have been between two links during one look.
constexpr int kQuietRounds = 3;
/// A process that executes a program shows no environment for a moment; one that has cleared its own for
/// ever.
constexpr int kLooksForEnvironment = 20;
/// What was found may have been inside of a fork when it was killed, so that its child is found afterwards.
constexpr int kMostPasses = 10;
/// The time that the kernel gets to end a process that was killed: long only on a busy machine.
constexpr std::chrono::milliseconds kEndLimit{10'000};

using Clock = std::chrono::steady_clock;

/// Returns the identifier that was given last; 0 when the system does not tell it.
pid_t LastIdentifier() {
    char text[128] = {};
    const FileHandle file(::open("/proc/loadavg", O_RDONLY | O_CLOEXEC));
    if (!file || ::read(file.Get(), text, sizeof text - 1) <= 0) return 0;
    constexpr int kField = 4;
    return FieldAt<pid_t>(text, kField);
}

/// Calls `visit` with each number that is an entry's name.
template <class Visit>
void VisitNumbers(const std::string& folder, Visit visit) {
    const OpenFolder open{::opendir(folder.c_str())};
    while (const ::dirent* const entry = open == nullptr ? nullptr : ::readdir(open.get())) {
        const std::string_view name = entry->d_name;
        if (const pid_t number = FieldAt<pid_t>(name, 0); number > 0) visit(number);
    }
}

/// Reads the environment; nothing when that is not permitted. The first thread shows none when it has ended.
std::optional<std::string> ReadEnvironment(const ProcessStat& entry) {
    auto environment = ReadProcessFile(entry.id, "environ");
    if (entry.threads <= 1 || !entry.IsFirstThreadOver()) return environment;
    VisitNumbers("/proc/" + std::to_string(entry.id) + "/task", [&environment](pid_t thread) {
        if (environment.value_or("").empty()) environment = ReadProcessFile(thread, "environ");
    });
    return environment;
}

template <class Visit>
void VisitProcess(pid_t process, Visit& visit) {
    const auto entry = ReadProcessStat(process);
    if (entry && !entry->HasEnded()) visit(*entry);
}

/// Visits the processes that were started after `last`, and those that are started meanwhile. One that has
/// just got its identifier may not show yet, so that the latest are visited again.
template <class Visit>
void VisitNewProcesses(pid_t last, Visit& visit) {
    constexpr int kMostLooks = 100;
    constexpr pid_t kAgain = 4;
    for (int look = 0; look < kMostLooks; ++look) {
        const pid_t now = LastIdentifier();
        for (pid_t process = std::max(last - kAgain, 1); process <= now; ++process) {
            VisitProcess(process, visit);
        }
        if (now <= last) return;
        last = now;
    }
}

/// Calls `visit` for every process that has not ended, each as soon as it is found: a chain whose links
/// start the next one and end is caught up with during one look.
template <class Visit>
void VisitProcesses(Visit visit) {
    const pid_t last = LastIdentifier();
    VisitNumbers("/proc", [&visit](pid_t process) { VisitProcess(process, visit); });
    if (last > 0) VisitNewProcesses(last, visit);
}

/// A process that was found in the tree; signals reach it or nobody.
class Member {
public:
    explicit Member(const ProcessStat& entry) : m_entry(entry), m_handle(OpenProcessDescriptor(entry.id)) {
        const auto now = ReadProcessStat(entry.id);
        m_isSame = now && now->startTime == entry.startTime;
    }

    [[nodiscard]] pid_t Id() const { return m_entry.id; }

    /// Returns false when it is not permitted.
    bool Signal(int number) const {
        return !m_isSame || SendSignal(m_handle.Get(), m_entry.id, number) || errno != EPERM;
    }

    /// Returns whether it has ended.
    [[nodiscard]] bool AwaitEnd(Clock::time_point deadline) const {
        while (m_isSame && IsStillThere()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0) return false;
            pollfd waited{m_handle.Get(), POLLIN, 0};
            constexpr int kLook = 10;  // there may be no handle to poll for
            ::poll(&waited, 1, std::min(static_cast<int>(left.count()), kLook));
        }
        return true;
    }

private:
    [[nodiscard]] bool IsStillThere() const {
        const auto now = ReadProcessStat(m_entry.id);
        return now && now->startTime == m_entry.startTime && !now->HasEnded();
    }

    ProcessStat m_entry;
    Handle<ObjectTraits> m_handle;
    bool m_isSame = false;
};

/// Holds the processes of a tree while it is being stopped.
class Tree {
public:
    explicit Tree(const ChildProcess::State& leader) : m_leader(leader.id), m_mark(leader.treeMark) {
        if (const auto entry = ReadProcessStat(m_leader)) m_startTime = entry->startTime;
        m_found.emplace(m_leader, m_startTime);
    }

    /// Signals the descendants that this look at the process list finds new. True when
    /// another look is needed: a process may complete a fork until it has stopped.
    bool SignalMore(int number) {
        bool again = false;
        VisitProcesses([&](const ProcessStat& entry) {
            const Membership membership = MembershipOf(entry);
            if (membership != Membership::Member) {
                again |= membership == Membership::Unclear;
            } else if (!IsFound(entry)) {
                m_found.insert_or_assign(entry.id, entry.startTime);
                if (!m_members.emplace_back(entry).Signal(number)) m_forbidden.insert(entry.id);
                again = true;
            } else {
                again |= entry.IsRunnable() && !m_forbidden.contains(entry.id);
            }
        });
        return again;
    }

    void StopAll() {
        const auto deadline = Clock::now() + kStopLimit;
        for (int quiet = 0; quiet < kQuietRounds && Clock::now() < deadline;) {
            quiet = SignalMore(SIGSTOP) ? 0 : quiet + 1;
            std::this_thread::sleep_for(kRoundPause);
        }
    }

    void Kill() const {
        for (const Member& member : m_members) member.Signal(SIGKILL);
    }

    /// Forgets those that have ended.
    void AwaitEnd(std::vector<std::uint32_t>& survivors) {
        const auto deadline = Clock::now() + kEndLimit;
        for (const Member& member : m_members) {
            if (!member.AwaitEnd(m_forbidden.contains(member.Id()) ? Clock::time_point() : deadline))
                survivors.push_back(static_cast<std::uint32_t>(member.Id()));
        }
        m_members.clear();
    }

private:
    /// Unclear: another look may tell.
    enum class Membership { Stranger, Member, Unclear };

    Membership MembershipOf(const ProcessStat& entry) {
        if (entry.group == m_leader || IsFound(entry) || IsFoundNow(entry.parent)) return Membership::Member;
        if (entry.startTime < m_startTime) return Membership::Stranger;
        const auto environment = ReadEnvironment(entry);
        if (!environment) return Membership::Stranger;
        if (environment->find(m_mark) != std::string::npos) return Membership::Member;
        const bool isOfKernel = entry.virtualBytes == 0;
        const bool mayShowMore =
            environment->empty() && !isOfKernel && ++m_looks[entry.id] < kLooksForEnvironment;
        return mayShowMore ? Membership::Unclear : Membership::Stranger;
    }

    [[nodiscard]] bool IsFound(const ProcessStat& entry) const {
        const auto found = m_found.find(entry.id);
        return found != m_found.end() && found->second == entry.startTime;
    }

    /// An identifier may be another process's by now.
    [[nodiscard]] bool IsFoundNow(pid_t process) const {
        if (!m_found.contains(process)) return false;
        const auto entry = ReadProcessStat(process);
        return entry && IsFound(*entry);
    }

    pid_t m_leader;
    std::string_view m_mark;
    unsigned long long m_startTime = 0;
    std::unordered_map<pid_t, unsigned long long> m_found;  // with their start times
    std::unordered_set<pid_t> m_forbidden;
    std::unordered_map<pid_t, int> m_looks;  // at those that have shown no environment
    std::vector<Member> m_members;
};

/// The leader may have joined another group, even that of this process.
bool KillLeader(const ChildProcess::State& leader) {
    const bool isKilled = HasEnded(leader) || SendSignal(leader.descriptor.Get(), leader.id, SIGKILL);
    ::kill(-leader.id, SIGKILL);
    const auto deadline = Clock::now() + kEndLimit;
    while (isKilled && !HasEnded(leader) && Clock::now() < deadline) std::this_thread::sleep_for(kRoundPause);
    return isKilled;
}

}  // namespace

bool IsAlive(pid_t process) {
    if (process <= 0) return false;
    const auto entry = ReadProcessStat(process);
    return entry ? !entry->HasEnded() : ::kill(process, 0) == 0 || errno == EPERM;
}

void SignalChild(const ChildProcess::State& child, int number) {
    SendSignal(child.descriptor.Get(), child.id, number);
}

void SignalTree(const ChildProcess::State& leader, int number) {
    Tree tree(leader);
    SignalChild(leader, number);
    tree.SignalMore(number);
}

bool KillTree(const ChildProcess::State& leader, std::vector<std::uint32_t>& survivors) {
    SignalChild(leader, SIGSTOP);
    Tree tree(leader);
    // Who could leave the group, because it may, is found by the looks.
    if (leader.group) leader.group->Kill(survivors);
    bool isKilled = true;
    for (int pass = 0; pass == 0 || (pass < kMostPasses && tree.SignalMore(SIGSTOP)); ++pass) {
        tree.StopAll();
        tree.Kill();
        isKilled = KillLeader(leader);
        tree.AwaitEnd(survivors);
    }
    std::sort(survivors.begin(), survivors.end());
    survivors.erase(std::unique(survivors.begin(), survivors.end()), survivors.end());
    return isKilled;
}

}  // namespace quillon::platform
