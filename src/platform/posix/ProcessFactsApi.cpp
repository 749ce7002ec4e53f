#include "platform/ProcessFactsApi.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "base/CommandLine.h"
#include "base/Utf.h"
#include "platform/native/EntryNames.h"
#include "platform/native/ProcFile.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

pid_t ProcessOf(HANDLE handle) { return static_cast<pid_t>(reinterpret_cast<std::intptr_t>(handle)); }

long long PageSize() {
    static const long long size = ::sysconf(_SC_PAGESIZE);
    return size;
}

std::optional<long long> CountedPrivateBytes(pid_t process) {
    const auto text = ReadProcessFile(process, "smaps_rollup");
    if (!text) return std::nullopt;
    const auto clean = NumberAfter(*text, "\nPrivate_Clean:");
    const auto dirty = NumberAfter(*text, "\nPrivate_Dirty:");
    if (!clean || !dirty) return std::nullopt;
    return (*clean + *dirty) * 1024;
}

/// "size resident shared ...", in pages. Readable for everyone.
std::optional<long long> EstimatedPrivateBytes(pid_t process) {
    const auto text = ReadProcessFile(process, "statm");
    if (!text) return std::nullopt;
    return (FieldAt<long long>(*text, 1) - FieldAt<long long>(*text, 2)) * PageSize();
}

std::optional<long long> PrivateBytes(pid_t process) {
    const auto counted = CountedPrivateBytes(process);
    return counted ? counted : EstimatedPrivateBytes(process);
}

/// What has nothing but zeros behind its first argument is a title that the process has written over all of
/// them.
std::vector<std::string_view> Arguments(std::string_view text) {
    const std::size_t end = text.find('\0');
    if (text.find_first_not_of('\0', end) == std::string_view::npos) text = text.substr(0, end);
    std::vector<std::string_view> arguments;
    while (!text.empty()) {
        arguments.push_back(text.substr(0, text.find('\0')));
        text.remove_prefix(std::min(arguments.back().size() + 1, text.size()));
    }
    return arguments;
}

long long Milliseconds(const timeval& time) { return time.tv_sec * 1000LL + time.tv_usec / 1000; }

}  // namespace

void ReadableProcessTraits::Close(Type) noexcept {}

ReadableProcess OpenReadableProcess(std::uint32_t id) {
    const std::string path = "/proc/" + std::to_string(id) + "/statm";
    if (::access(path.c_str(), R_OK) == 0) {
        return ReadableProcess(reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(id)));
    }
    if (errno == ENOENT) errno = ESRCH;
    FailWithErrno();
    return ReadableProcess();
}

std::optional<std::wstring> CommandLineOf(std::uint32_t id) {
    const auto text = ReadProcessFile(static_cast<pid_t>(id), "cmdline");
    if (text) return base::ToWide(base::JoinCommandLine(Arguments(*text)));
    FailWithErrno();
    return std::nullopt;
}

long long PrivateWorkingSet(HANDLE process) { return PrivateBytes(ProcessOf(process)).value_or(0); }

std::optional<std::vector<std::uint32_t>> ListProcessIds() {
    const auto names = EntryNames("/proc");
    if (!names) {
        FailWithErrno();
        return std::nullopt;
    }
    std::vector<std::uint32_t> ids;
    for (const std::string& name : *names) {
        const char* const end = name.data() + name.size();
        std::uint32_t id = 0;
        const auto [next, error] = std::from_chars(name.data(), end, id);
        if (error == std::errc() && next == end) ids.push_back(id);
    }
    if (!ids.empty()) return ids;
    errno = ENOENT;  // /proc is not mounted: this process would be in it
    FailWithErrno();
    return std::nullopt;
}

OwnUsage UsageOfThisProcess() {
    OwnUsage usage;
    const pid_t self = ::getpid();
    if (const auto pages = ReadProcessFile(self, "statm")) {
        usage.residentBytes = FieldAt<long long>(*pages, 1) * PageSize();
    }
    usage.privateBytes = PrivateBytes(self);
    rusage times{};
    if (::getrusage(RUSAGE_SELF, &times) == 0) {
        usage.userMilliseconds = Milliseconds(times.ru_utime);
        usage.kernelMilliseconds = Milliseconds(times.ru_stime);
    }
    usage.threads = CountEntries("/proc/self/task");
    usage.handles = CountEntries("/proc/self/fd");
    if (usage.handles) --*usage.handles;  // the one that counted
    return usage;
}

}  // namespace quillon::platform
