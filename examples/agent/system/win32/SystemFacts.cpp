#include "system/SystemFacts.h"

#include <windows.h>

#include <array>
#include <memory>
#include <vector>

#include "quillon/MiscUtils.h"
#include "quillon/StringUtils.h"
#include "system/win32/Handle.h"

namespace quillon::agent {

namespace {

constexpr DWORD kLongestPath = 32768;

}  // namespace

std::optional<std::string> ReadExecutable(unsigned long pid) {
    const Handle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
    if (process == nullptr) return std::nullopt;
    std::vector<wchar_t> path(kLongestPath);
    DWORD size = kLongestPath;
    if (!::QueryFullProcessImageNameW(process.get(), 0, path.data(), &size)) return std::nullopt;
    return StringUtils::WideStringToNarrow(std::wstring(path.data(), size));
}

std::string ReadHostName() {
    std::array<wchar_t, 256> name{};
    DWORD size = static_cast<DWORD>(name.size());
    if (!::GetComputerNameExW(ComputerNameDnsHostname, name.data(), &size)) return {};
    return StringUtils::WideStringToNarrow(std::wstring(name.data(), size));
}

std::string ReadSystemName() { return "Windows " + MiscUtils::OsVersion().to_string(); }

unsigned long long ReadMemorySize() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return ::GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
}

std::string ReadAccountName() {
    std::array<wchar_t, 257> name{};
    DWORD size = static_cast<DWORD>(name.size());
    return ::GetUserNameW(name.data(), &size) ? StringUtils::WideStringToNarrow(name.data()) : "";
}
}  // namespace quillon::agent
