#include "platform/ProcedureApi.h"

#include "base/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

bool IsSystemAtLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t servicePack) {
    OSVERSIONINFOEXW wanted{};
    wanted.dwOSVersionInfoSize = sizeof wanted;
    wanted.dwMajorVersion = major;
    wanted.dwMinorVersion = minor;
    wanted.wServicePackMajor = static_cast<WORD>(servicePack);
    DWORDLONG conditions = 0;
    constexpr DWORD kParts[] = {VER_MAJORVERSION, VER_MINORVERSION, VER_SERVICEPACKMAJOR};
    for (const DWORD part : kParts) conditions = ::VerSetConditionMask(conditions, part, VER_GREATER_EQUAL);
    return ::VerifyVersionInfoW(&wanted, VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR,
                                conditions) != 0;
}

HINSTANCE LoadedModule(const std::string& name) { return ::GetModuleHandleW(base::ToWide(name).c_str()); }

std::optional<std::string> SystemFolder() {
    std::wstring path(MAX_PATH + 1, L'\0');
    const UINT length = ::GetSystemDirectoryW(path.data(), static_cast<UINT>(path.size()));
    if (length == 0 || length > MAX_PATH) return std::nullopt;
    return base::ToUtf8(std::wstring_view(path).substr(0, length));
}

HINSTANCE LoadLibraryAt(const std::string& path) { return ::LoadLibraryW(base::ToWide(path).c_str()); }

Procedure FindProcedure(HINSTANCE module, const char* name) {
    return reinterpret_cast<Procedure>(::GetProcAddress(module, name));
}

}  // namespace

ProcedureCalls SystemProcedureCalls() {
    return {IsSystemAtLeast, LoadedModule, SystemFolder, LoadLibraryAt, FindProcedure};
}

}  // namespace quillon::platform
