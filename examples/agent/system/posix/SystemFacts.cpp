#include "system/SystemFacts.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <filesystem>

namespace quillon::agent {

std::optional<std::string> ReadExecutable(unsigned long pid) {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error);
    return error ? std::nullopt : std::optional(path.string());
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
