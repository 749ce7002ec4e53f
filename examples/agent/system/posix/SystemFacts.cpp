#include "system/SystemFacts.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string_view>

namespace quillon::agent {

std::optional<std::string> ReadExecutable(unsigned long pid) {
    constexpr std::string_view kReplaced = " (deleted)";
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error).string();
    if (error) return std::nullopt;
    // The file may have been replaced by a newer one while it runs.
    if (path.ends_with(kReplaced) && ::access(path.c_str(), F_OK) != 0)
        path.resize(path.size() - kReplaced.size());
    return path;
}

std::string ReadHostName() {
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string ReadSystemName() {
    utsname name{};
    return ::uname(&name) == 0 ? std::string(name.sysname) + ' ' + name.release : std::string();
}

unsigned long long ReadMemorySize() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long size = ::sysconf(_SC_PAGESIZE);
    return pages > 0 && size > 0 ? static_cast<unsigned long long>(pages) * static_cast<unsigned long>(size)
                                 : 0;
}

std::string ReadAccountName() {
    std::array<char, 16384> texts{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, texts.data(), texts.size(), &found) != 0) return {};
    return found == nullptr ? "" : found->pw_name;
}
}  // namespace quillon::agent
