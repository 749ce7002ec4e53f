#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_set>
#include <vector>

#include "platform/ProcessApi.h"
#include "platform/native/ProcFile.h"
#include "platform/native/ProcessStat.h"
#include "platform/posix/Children.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

/// A tree that forks faster than it is stopped is killed as far as it was found.
constexpr int kMaxRounds = 300;
constexpr std::chrono::milliseconds kRoundPause{1};
/// The time that the kernel gets to end a process that was killed.
constexpr std::chrono::milliseconds kEndLimit{1000};

std::string ReadOf(pid_t process, const char* name) {
    return ReadProcessFile(process, name).value_or(std::string());
}

std::vector<ProcessStat> AllProcesses() {
    std::vector<ProcessStat> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator folder("/proc", error), end; !error && folder != end;
         folder.increment(error)) {
        const std::string name = folder->path().filename().string();
        const pid_t process = FieldAt<pid_t>(name, 0);
        if (process <= 0) continue;
        const auto entry = ReadProcessStat(process);
        if (entry && !entry->HasEnded()) entries.push_back(*entry);
    }
    return entries;
}

/// A process that was found in the tree; signals reach it or nobody.
class Member {
public:
    explicit Member(const ProcessStat& entry) : m_entry(entry), m_handle(OpenProcessDescriptor(entry.id)) {
        const auto now = ReadProcessStat(entry.id);
        m_isSame = now && now->startTime == entry.startTime;
    }

    void Signal(int number) const {
        if (!m_isSame) return;
        if (m_handle) {
            ::syscall(SYS_pidfd_send_signal, m_handle.Get(), number, nullptr, 0);
        } else {
            ::kill(m_entry.id, number);
        }
    }

    void AwaitEnd(std::chrono::steady_clock::time_point deadline) const {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waited{m_handle.Get(), POLLIN, 0};
        if (m_isSame && m_handle && left.count() > 0) ::poll(&waited, 1, static_cast<int>(left.count()));
    }

private:
    ProcessStat m_entry;
    Handle<ObjectTraits> m_handle;
    bool m_isSame = false;
};

/// Holds the processes of a tree while it is being stopped.
class Tree {
public:
    Tree(pid_t leader, std::string_view mark) : m_leader(leader), m_mark(mark), m_known{leader} {
        if (const auto entry = ReadProcessStat(leader)) m_startTime = entry->startTime;
    }

    /// Stops the descendants that this look at the process list finds new. True when
    /// another look is needed: a process may complete a fork until it has stopped.
    bool StopMore() {
        bool again = false;
        for (const ProcessStat& entry : AllProcesses()) {
            if (!Contains(entry)) continue;
            again |= entry.IsRunnable();
            if (m_known.insert(entry.id).second) m_members.emplace_back(entry).Signal(SIGSTOP);
        }
        return again;
    }

    void Kill() const {
        for (const Member& member : m_members) member.Signal(SIGKILL);
    }

    void AwaitEnd() const {
        const auto deadline = std::chrono::steady_clock::now() + kEndLimit;
        for (const Member& member : m_members) member.AwaitEnd(deadline);
    }

private:
    [[nodiscard]] bool Contains(const ProcessStat& entry) const {
        if (m_known.contains(entry.id) || entry.group == m_leader || m_known.contains(entry.parent))
            return true;
        return entry.startTime >= m_startTime &&
               ReadOf(entry.id, "environ").find(m_mark) != std::string::npos;
    }

    pid_t m_leader;
    std::string_view m_mark;
    unsigned long long m_startTime = 0;
    std::unordered_set<pid_t> m_known;
    std::vector<Member> m_members;
};

}  // namespace

bool IsAlive(pid_t process) {
    if (process <= 0) return false;
    const auto entry = ReadProcessStat(process);
    return entry ? !entry->HasEnded() : ::kill(process, 0) == 0 || errno == EPERM;
}

bool KillTree(pid_t leader, const std::string& mark) {
    if (::kill(leader, SIGSTOP) != 0) return FailWithErrno();
    Tree tree(leader, std::string_view(mark.c_str(), mark.size() + 1));  // not the beginning of another
    for (int round = 0; round < kMaxRounds && tree.StopMore(); ++round) {
        std::this_thread::sleep_for(kRoundPause);
    }
    tree.Kill();
    if (::kill(-leader, SIGKILL) != 0) return FailWithErrno();
    tree.AwaitEnd();
    return true;
}

}  // namespace quillon::platform
