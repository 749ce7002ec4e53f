#include "platform/posix/ChildEnd.h"

#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace quillon::platform {

namespace {

/// The kernel's, which the headers of older systems do not have.
constexpr int kWaitForDescriptor = 3;  // P_PIDFD
struct PidfdInfo {
    std::uint64_t mask;
    std::uint64_t cgroup;
    std::uint32_t ids[11];
    std::int32_t exitStatus;
};
constexpr std::uint64_t kTellExit = 1 << 3;
constexpr unsigned long kGetInfo = _IOWR(0xFF, 11, PidfdInfo);
static_assert(sizeof(PidfdInfo) == 64);

std::optional<ChildEnd> EndOfReaped(const ChildProcess::State& child) {
    PidfdInfo info{};
    info.mask = kTellExit;
    if (!child.descriptor || ::ioctl(child.descriptor.Get(), kGetInfo, &info) != 0 ||
        (info.mask & kTellExit) == 0) {
        errno = ECHILD;
        return std::nullopt;
    }
    ChildEnd end;
    if (WIFSIGNALED(info.exitStatus)) {
        end.signal = WTERMSIG(info.exitStatus);
    } else {
        end.status = WEXITSTATUS(info.exitStatus);
    }
    return end;
}

}  // namespace

int AwaitChild(const ChildProcess::State& child, bool reap, bool block, ChildEnd& end) {
    siginfo_t info{};
    const int options = WEXITED | (reap ? 0 : WNOWAIT) | (block ? 0 : WNOHANG);
    const bool byDescriptor = static_cast<bool>(child.descriptor);
    const int type = byDescriptor ? kWaitForDescriptor : P_PID;
    const int id = byDescriptor ? child.descriptor.Get() : child.id;
    // The library's function does not give what was used.
    long result = 0;
    do {
        result = ::syscall(SYS_waitid, type, id, &info, options, &end.usage);
    } while (result != 0 && errno == EINTR);
    if (result != 0) return errno;
    if (info.si_pid == 0) return EAGAIN;
    (info.si_code == CLD_EXITED ? end.status : end.signal) = info.si_status;
    return 0;
}

std::optional<ChildEnd> ReadChildEnd(const ChildProcess::State& child) {
    ChildEnd end;
    const int error = AwaitChild(child, false, false, end);
    if (error == 0) return end;
    errno = error;
    return error == ECHILD ? EndOfReaped(child) : std::nullopt;
}

}  // namespace quillon::platform
