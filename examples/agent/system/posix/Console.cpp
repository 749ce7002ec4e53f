#include "system/Console.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "quillon/ThreadUtils.h"

namespace quillon::agent {

namespace {

InterruptHandler& Handler() {
    static constinit InterruptHandler handler = nullptr;
    return handler;
}

/// What the thread of AfterInterrupt() waits for; -1 without it.
int& Interrupted() {
    static constinit int event = -1;
    return event;
}

/// Only async-signal-safe calls.
extern "C" void HandleSignal(int number) {
    const int error = errno;
    if (Handler()()) {
        const std::uint64_t one = 1;
        if (Interrupted() >= 0) static_cast<void>(!::write(Interrupted(), &one, sizeof one));
        errno = error;
        return;
    }
    ::signal(number, SIG_DFL);
    ::raise(number);  // delivered when this handler returns
}

/// Nothing that the system refuses ends the watch: the agent could not be stopped any more.
void AwaitInterrupt() {
    constexpr useconds_t kPauseUs = 10'000;
    pollfd event = {Interrupted(), POLLIN, 0};
    while (::poll(&event, 1, -1) != 1) ::usleep(kPauseUs);
    std::uint64_t count = 0;
    if (::read(Interrupted(), &count, sizeof count) < 0) ::usleep(kPauseUs);  // it is still set
}

}  // namespace

std::vector<std::string> GetArguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

void SecureStandardStreams() {
    // What is ignored would stay so in commands. A write past the limit of a file's size fails, as on a full
    // disk, where the agent would end by the second one.
    for (const int number : {SIGPIPE, SIGXFSZ}) ::signal(number, [](int) {});
    int opened = 0;
    do {  // the lowest free descriptor is taken
        opened = ::open("/dev/null", O_RDWR);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened > STDERR_FILENO) ::close(opened);
}

std::FILE* TakeStandardOutput() {
    const int taken = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (taken < 0) return nullptr;
    std::FILE* const stream = ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0 ? nullptr : ::fdopen(taken, "w");
    if (stream == nullptr) ::close(taken);
    return stream;
}

std::size_t TerminalWidth(std::FILE* stream) {
    winsize size = {};
    return ::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool IsErrorTerminal() { return ::isatty(STDERR_FILENO) == 1; }

void OnInterrupt(InterruptHandler handler) {
    Handler() = handler;
    struct sigaction action = {};
    action.sa_handler = &HandleSignal;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGQUIT, SIGHUP}) {
        struct sigaction old = {};
        ::sigaction(number, nullptr, &old);
        if (number == SIGHUP && old.sa_handler == SIG_IGN) continue;  // the agent is to outlive its terminal
        ::sigaction(number, &action, nullptr);
    }
}

void AfterInterrupt(std::function<void()> task) {
    Interrupted() = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (Interrupted() < 0)
        throw std::runtime_error("Cannot watch for signals: " + std::generic_category().message(errno));
    sigset_t all, before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);  // the signals are for the other threads
    std::thread([task = std::move(task)] {
        ThreadUtils::SetThreadName("signals");
        for (;;) {
            AwaitInterrupt();
            task();
        }
    }).detach();
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace quillon::agent
