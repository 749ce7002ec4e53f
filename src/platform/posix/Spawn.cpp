#include "platform/posix/Spawn.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <memory>

/// The C library's clone() under its other name: the thread sanitizer takes a call of clone() for a fork,
/// also when the child shares the memory.
extern "C" int __clone(int (*run)(void*), void* stack, int flags, void* argument, ...);

namespace quillon::platform {

namespace {

/// The child shares this process's memory, and its caller waits, until the program runs. It therefore calls
/// the kernel alone, without the library's and a sanitizer's records of this process. Not in the headers:
constexpr unsigned long kClonePidfd = 0x1000;
constexpr unsigned long kCloneIntoGroup = 0x200000000;
constexpr long kClone3 = 435;
constexpr int kLastSignal = 64;

/// Strings as the null-terminated array that exec takes.
std::vector<char*> PointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const std::string& text : strings) pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

struct ChildData {
    explicit ChildData(const SpawnPlan& plan)
        : programs(PointersTo(plan.programs)),
          arguments(PointersTo(plan.arguments)),
          environment(PointersTo(plan.environment)),
          directory(plan.directory.empty() ? nullptr : plan.directory.c_str()),
          input(plan.input),
          output(plan.output),
          isGroupLeader(plan.isGroupLeader),
          endsWithThread(plan.endsWithThread),
          parent(::getpid()) {}

    const std::vector<char*> programs, arguments, environment;
    const char* const directory;
    const int input, output;
    const bool isGroupLeader, endsWithThread;
    const pid_t parent;
    int error = 0;  // set by the child
};

#define QUILLON_IN_CHILD __attribute__((no_sanitize("address", "thread", "undefined")))

QUILLON_IN_CHILD bool Redirect(int from, int to, int mode) {
    if (from >= 0) return ::syscall(SYS_dup3, from, to, 0) >= 0;
    const long opened = ::syscall(SYS_openat, AT_FDCWD, "/dev/null", mode, 0);
    if (opened < 0) return false;
    if (opened == to) return true;
    const bool isDone = ::syscall(SYS_dup3, opened, to, 0) >= 0;
    ::syscall(SYS_close, opened);
    return isDone;
}

QUILLON_IN_CHILD bool SetHandles(const ChildData& data) {
    if (!Redirect(data.input, STDIN_FILENO, O_RDONLY) || !Redirect(data.output, STDOUT_FILENO, O_WRONLY) ||
        !Redirect(data.output, STDERR_FILENO, O_WRONLY)) {
        return false;
    }
    constexpr unsigned kFirst = STDERR_FILENO + 1;
    if (::syscall(SYS_close_range, kFirst, UINT_MAX, 0) == 0) return true;
    constexpr int kMost = 65536;
    for (int i = kFirst; i < kMost; ++i) ::syscall(SYS_close, i);
    return true;
}

/// A signal that this process ignores would stay ignored.
QUILLON_IN_CHILD void ResetSignals() {
    const unsigned long defaults[8] = {};  // the kernel's action, larger than it is on any machine
    constexpr std::size_t kMaskSize = 8;
    for (int number = 1; number <= kLastSignal; ++number) {
        ::syscall(SYS_rt_sigaction, number, defaults, nullptr, kMaskSize);
    }
    ::syscall(SYS_rt_sigprocmask, SIG_SETMASK, defaults, nullptr, kMaskSize);
}

QUILLON_IN_CHILD bool Prepare(const ChildData& data) {
    if (data.isGroupLeader && ::syscall(SYS_setpgid, 0, 0) != 0) return false;
    if (data.endsWithThread) {
        ::syscall(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
        if (::syscall(SYS_getppid) != data.parent) ::syscall(SYS_exit, 1);  // it has ended already
    }
    return SetHandles(data) && (data.directory == nullptr || ::syscall(SYS_chdir, data.directory) == 0);
}

/// The reason why the first program that is there cannot be run goes before those that are not there.
QUILLON_IN_CHILD int ChildMain(void* argument) {
    auto& data = *static_cast<ChildData*>(argument);
    if (Prepare(data)) {
        ResetSignals();
        int reason = ENOENT;
        for (std::size_t i = 0; data.programs[i] != nullptr; ++i) {
            ::syscall(SYS_execve, data.programs[i], data.arguments.data(), data.environment.data());
            if (errno != ENOENT && errno != ENOTDIR && reason == ENOENT) reason = errno;
            if (errno != ENOENT && errno != ENOTDIR && errno != EACCES) break;
        }
        data.error = reason;
    } else {
        data.error = errno;
    }
    ::syscall(SYS_exit, 127);
    return 0;
}

/// A handler must not run in the child, which would change this process's memory.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, &m_before);
    }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before{};
};

/// The stack of a child until its program runs.
class ChildStack {
public:
    static constexpr std::size_t kSize = 64 * 1024;

    [[nodiscard]] char* Bottom() const {
        char* const start = m_memory.get() + kAlignment;
        return start - reinterpret_cast<std::uintptr_t>(start) % kAlignment;
    }
    [[nodiscard]] char* Top() const { return Bottom() + kSize; }

private:
    static constexpr std::size_t kAlignment = 64;
    const std::unique_ptr<char[]> m_memory{new char[kSize + kAlignment]};
};

#if defined(__x86_64__)

/// The argument of the kernel's clone3(), of which the C library has no function.
struct CloneArguments {
    std::uint64_t flags, pidfd, childThread, parentThread, exitSignal, stack, stackSize, tls, threads,
        threadCount, group;
};

/// Starts a child in a control group; negative when the kernel does not.
pid_t CloneIntoGroup(int group, const ChildStack& stack, ChildData& data, int& descriptor) {
    CloneArguments arguments{};
    arguments.flags = CLONE_VM | CLONE_VFORK | kClonePidfd | kCloneIntoGroup;
    arguments.pidfd = reinterpret_cast<std::uintptr_t>(&descriptor);
    arguments.exitSignal = SIGCHLD;
    arguments.stack = reinterpret_cast<std::uintptr_t>(stack.Bottom());
    arguments.stackSize = ChildStack::kSize;
    arguments.group = static_cast<std::uint64_t>(group);
    long result = kClone3;
    int (*const run)(void*) = &ChildMain;
    // The child begins with an empty stack and the caller's registers, and never returns from `run`.
    asm volatile(
        "syscall\n\t"
        "test %%rax, %%rax\n\t"
        "jnz 1f\n\t"
        "mov %[data], %%rdi\n\t"
        "call *%[run]\n\t"
        "hlt\n"
        "1:"
        : "+a"(result)
        : "D"(&arguments), "S"(sizeof arguments), [run] "r"(run), [data] "r"(&data)
        : "rcx", "r11", "memory");
    return static_cast<pid_t>(result);
}

#else

pid_t CloneIntoGroup(int, const ChildStack&, ChildData&, int&) { return -1; }

#endif

pid_t Clone(const SpawnPlan& plan, const ChildStack& stack, ChildData& data, int& descriptor) {
    const pid_t child = plan.group < 0 ? -1 : CloneIntoGroup(plan.group, stack, data, descriptor);
    if (child > 0) return child;
    descriptor = -1;
    return ::__clone(&ChildMain, stack.Top(),
                     static_cast<int>(CLONE_VM | CLONE_VFORK | kClonePidfd | SIGCHLD), &data, &descriptor);
}

}  // namespace

pid_t Spawn(const SpawnPlan& plan, int& descriptor) {
    ChildData data(plan);
    const ChildStack stack;
    const BlockedSignals blocked;
    const pid_t child = Clone(plan, stack, data, descriptor);
    if (child < 0) return 0;
    if (data.error == 0) return child;
    // It has ended without a program; where the host reaps children by itself there is nothing to wait for.
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
    errno = data.error;
    return 0;
}

}  // namespace quillon::platform
