#include "system/Console.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace quillon::agent {

namespace {

InterruptHandler& Handler() {
    static constinit InterruptHandler handler = nullptr;
    return handler;
}

/// Only async-signal-safe calls.
extern "C" void HandleSignal(int number) {
    if (Handler()()) return;
    ::signal(number, SIG_DFL);
    ::raise(number);  // delivered when this handler returns
}

}  // namespace

std::vector<std::string> GetArguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
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
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

}  // namespace quillon::agent
