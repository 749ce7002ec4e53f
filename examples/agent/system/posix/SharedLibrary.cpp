#include "system/SharedLibrary.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>
#include <thread>

#include "quillon/PathUtils.h"
#include "system/SystemErrorText.h"

namespace quillon::agent {

namespace {

/// Returns the path without links, or the empty text with the reason in errno.
std::string RealPath(const std::string& path) {
    char buffer[PATH_MAX];
    return ::realpath(path.c_str(), buffer) == nullptr ? "" : buffer;
}

bool IsTrusted(uid_t owner) { return owner == 0 || owner == ::geteuid(); }

/// In a sticky directory others may make files, but not rename or remove ours. A POSIX access list shows its
/// widest grant in the bits of the group.
bool IsOpenToOthers(const struct stat& status, bool isAbove) {
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) == 0) return false;
    return !(isAbove && (status.st_mode & S_ISVTX) != 0);
}

std::string CheckOne(const std::string& path, bool isAbove) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return path + ": " + SystemErrorText(errno);
    if (!IsTrusted(status.st_uid)) return path + " belongs to the account " + std::to_string(status.st_uid);
    return IsOpenToOthers(status, isAbove) ? path + " may be written by other accounts" : "";
}

std::string CheckWithParents(const std::string& real) {
    std::string fault = CheckOne(real, false);
    for (std::size_t end = real.rfind('/'); fault.empty() && end != std::string::npos && end != 0;
         end = real.rfind('/', end - 1))
        fault = CheckOne(real.substr(0, end), true);
    return fault.empty() ? CheckOne("/", true) : fault;
}

/// What is something else, as a FIFO, may keep whoever opens it waiting.
std::string CheckIsRegular(const std::string& real) {
    struct stat status {};
    if (::stat(real.c_str(), &status) != 0) return real + ": " + SystemErrorText(errno);
    return S_ISREG(status.st_mode) ? "" : "it is no regular file";
}

int trialReport = -1;  // of the child, which tells there what ended it, or a NUL when nothing did

[[noreturn]] void ReportAndEnd() {
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const std::exception& error) {
        [[maybe_unused]] const auto written = ::write(trialReport, error.what(), std::strlen(error.what()));
    } catch (...) {
    }
    ::_exit(EXIT_FAILURE);
}

[[noreturn]] void LoadInChild(const std::string& path, int report) {
    trialReport = report;
    // An exception ends the process within dlopen(), but it leaves that of a sanitizer, although the
    // function's declaration, which the compiler believes, says that none does.
    void* (*const volatile load)(const char*, int) = &::dlopen;
    std::set_terminate(&ReportAndEnd);
    try {
        load(path.c_str(), RTLD_NOW | RTLD_LOCAL);  // what only fails tells the real attempt why
    } catch (...) {
        ReportAndEnd();
    }
    [[maybe_unused]] const auto written = ::write(report, "", 1);
    ::_exit(EXIT_SUCCESS);
}

/// Returns what is in a pipe already. Who else has its other end, as a process that a constructor has
/// started, may never close it.
std::string ReadPresent(int pipe) {
    std::string text;
    char buffer[1024];
    ssize_t count = 0;
    while ((count = ::read(pipe, buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<std::size_t>(count));
    return text;
}

/// Returns the child's status, 0 when the system has reaped it already; ends one that hangs.
int AwaitChild(pid_t child) {
    constexpr std::chrono::seconds kLongest{30};
    constexpr std::chrono::milliseconds kPause{2};
    const auto deadline = std::chrono::steady_clock::now() + kLongest;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) ::kill(child, SIGKILL);
        std::this_thread::sleep_for(kPause);
    }
    return status;
}

std::string FaultOf(int status, const std::string& report) {
    if (report == std::string(1, '\0')) return {};
    if (!report.empty()) return "a constructor of it threw: " + report;
    if (WIFSIGNALED(status))
        return "loading it ends the process by the signal " + std::to_string(WTERMSIG(status));
    return "loading it ends the process";
}

/// Loads the library in a child first, as an exception, a crash or a hang of its static constructors cannot
/// be survived in the process itself. Returns what happened to the child.
std::string TryInChild(const std::string& path) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return SystemErrorText(errno);
    const pid_t child = ::fork();
    if (child == 0) LoadInChild(path, ends[1]);
    const int forkError = errno;
    ::close(ends[1]);
    std::string fault = SystemErrorText(forkError);
    if (child > 0) {
        const int status = AwaitChild(child);
        fault = FaultOf(status, ReadPresent(ends[0]));
    }
    ::close(ends[0]);
    return fault;
}

}  // namespace

const char* const kSharedLibraryEnd = ".so";

/// The path without links is found out once: a link that changes between check and load leads nowhere else.
void* LoadFunction(const std::string& path, const char* name, std::string& fault) {
    const std::string real = RealPath(PathUtils::ToSystemPath(path));
    fault = real.empty() ? path + ": " + SystemErrorText(errno) : CheckWithParents(real);
    if (fault.empty()) fault = CheckIsRegular(real);
    if (fault.empty()) fault = TryInChild(real);
    if (!fault.empty()) return nullptr;
    void* const library = ::dlopen(real.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const function = library == nullptr ? nullptr : ::dlsym(library, name);
    if (function == nullptr) {
        const char* const reason = ::dlerror();
        fault = reason == nullptr ? "its entry is null" : reason;
    }
    return function;
}

std::string FindForeignWriter(const std::string& path) {
    const std::string real = RealPath(PathUtils::ToSystemPath(path));
    return real.empty() ? path + ": " + SystemErrorText(errno) : CheckWithParents(real);
}

void TryLibraryIfAsked(const std::vector<std::string>&) {}

}  // namespace quillon::agent
