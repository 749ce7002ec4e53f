#include "platform/ProcessApi.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <limits>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileContent.h"
#include "platform/posix/Children.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Between two looks at a child that cannot be polled for.
constexpr milliseconds kLookInterval{10};

int PollTimeout(std::optional<Clock::time_point> deadline, bool canPoll) {
    auto timeout = canPoll ? milliseconds(std::numeric_limits<int>::max()) : kLookInterval;
    if (deadline) {
        const auto left = std::chrono::ceil<milliseconds>(*deadline - Clock::now());
        timeout = std::clamp(left, milliseconds(0), timeout);
    }
    return static_cast<int>(timeout.count());
}

/// Resets a signalled event; false when another wait was faster.
bool Consume(int event) {
    std::uint64_t count = 0;
    return ::read(event, &count, sizeof count) == sizeof count;
}

std::int32_t StatusOfEnd(const siginfo_t& end, const std::optional<std::int32_t>& killedWith) {
    if (end.si_code == CLD_EXITED) return end.si_status;
    return end.si_status == SIGKILL && killedWith ? *killedWith : 128 + end.si_status;
}

/// The children that were let go and have ended since.
void ReapLetGo(ChildTable& table) {
    std::erase_if(table.children, [](const auto& entry) {
        siginfo_t end{};
        return entry.second.letGo &&
               (::waitid(P_PID, static_cast<id_t>(entry.first), &end, WEXITED | WNOHANG) != 0 ||
                end.si_pid != 0);
    });
}

KillResult KillStranger(pid_t process) {
    if (!IsAlive(process)) {
        SetLastErrorCode(base::kInvalidParameter);
        return KillResult::NotOpened;
    }
    if (::kill(process, SIGKILL) == 0) return KillResult::Killed;
    FailWithErrno();
    return KillResult::NotOpened;
}

}  // namespace

void ObjectTraits::Close(Type value) noexcept {
    const int error = errno;
    ::close(value);
    errno = error;
}

EventHandle CreateAutoResetEvent() {
    EventHandle event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!event) FailWithErrno();
    return event;
}

bool SignalEvent(const EventHandle& event) {
    const std::uint64_t one = 1;
    return ::write(event.Get(), &one, sizeof one) == sizeof one || FailWithErrno();
}

ChildTable& Children() {
    static ChildTable& table = *new ChildTable;
    return table;
}

bool HasChildEnded(pid_t child) {
    siginfo_t end{};
    return ::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOHANG | WNOWAIT) != 0 ||
           end.si_pid != 0;
}

int OpenProcessDescriptor(pid_t process) { return static_cast<int>(::syscall(SYS_pidfd_open, process, 0)); }

ChildProcess::~ChildProcess() {
    if (m_id == 0) return;
    ChildTable& table = Children();
    const std::lock_guard lock(table.mutex);
    const auto child = table.children.find(static_cast<pid_t>(m_id));
    if (child != table.children.end()) child->second.letGo = true;
    ReapLetGo(table);
}

std::uint32_t ChildProcess::Wait(const EventHandle& event, std::optional<milliseconds> limit) const {
    std::optional<Clock::time_point> deadline;
    if (limit) deadline = Clock::now() + *limit;
    for (;;) {
        pollfd waited[] = {{m_handle.Get(), POLLIN, 0}, {event.Get(), POLLIN, 0}};
        if (::poll(waited, 2, PollTimeout(deadline, static_cast<bool>(m_handle))) < 0 && errno != EINTR) {
            FailWithErrno();
            return kWaitFailed;
        }
        if (m_handle ? waited[0].revents != 0 : HasChildEnded(static_cast<pid_t>(m_id))) return kWaitProcess;
        if (waited[1].revents != 0 && Consume(event.Get())) return kWaitEvent;
        if (deadline && Clock::now() >= *deadline) return kWaitTimeout;
    }
}

std::optional<std::int32_t> ChildProcess::ExitStatus() const {
    ChildTable& table = Children();
    const std::lock_guard lock(table.mutex);
    siginfo_t end{};
    int result = -1;
    do {
        result = ::waitid(P_PID, static_cast<id_t>(m_id), &end, WEXITED | WNOWAIT);
    } while (result != 0 && errno == EINTR);
    if (result == 0) return StatusOfEnd(end, table.children.at(static_cast<pid_t>(m_id)).killedWith);
    FailWithErrno();
    return std::nullopt;
}

KillResult KillProcess(std::uint32_t id, std::int32_t exitStatus, KillScope scope) {
    // 0 and negative identifiers mean whole groups to the system.
    const pid_t process = id <= std::numeric_limits<pid_t>::max() ? static_cast<pid_t>(id) : 0;
    ChildTable& table = Children();
    const std::lock_guard lock(table.mutex);
    const auto child = table.children.find(process);
    if (child == table.children.end()) return KillStranger(process);
    if (child->second.killedWith || HasChildEnded(process)) {
        SetLastErrorCode(base::kAccessDenied);
        return KillResult::NotKilled;
    }
    const bool tree = scope == KillScope::Tree && !child->second.treeMark.empty();
    if (!(tree ? KillTree(process, child->second.treeMark)
               : ::kill(process, SIGKILL) == 0 || FailWithErrno())) {
        return KillResult::NotKilled;
    }
    child->second.killedWith = exitStatus;
    return KillResult::Killed;
}

FileHandle MakeInputFile(std::string_view content) {
    FileHandle file(content.empty() ? ::open("/dev/null", O_RDONLY | O_CLOEXEC)
                                    : ::memfd_create("standard input", MFD_CLOEXEC));
    if (!file) FailWithErrno();
    if (!file || content.empty()) return file;
    if (!WriteAll(file, content)) return FileHandle();
    if (::lseek(file.Get(), 0, SEEK_SET) == 0) return file;
    FailWithErrno();
    return FileHandle();
}

bool CutOpenFile(const FileHandle& file, std::uint64_t size) {
    const auto current = ::lseek(file.Get(), 0, SEEK_END);
    if (current >= 0 && static_cast<std::uint64_t>(current) <= size) return true;
    return ::ftruncate(file.Get(), static_cast<off_t>(size)) == 0 || FailWithErrno();
}

}  // namespace quillon::platform
