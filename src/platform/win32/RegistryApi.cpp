#include "platform/RegistryApi.h"

#include "base/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

HKEY OpenKey(const std::string& path) {
    HKEY key = nullptr;
    const LSTATUS code =
        ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, base::ToWide(path).c_str(), 0, KEY_ALL_ACCESS, &key);
    if (code == ERROR_SUCCESS) return key;
    ::SetLastError(static_cast<DWORD>(code));
    return nullptr;
}

std::uint32_t QueryKey(HKEY key, const char* name, void* buffer, std::uint32_t& size) {
    DWORD length = size;
    const LSTATUS code =
        ::RegQueryValueExA(key, name, nullptr, nullptr, static_cast<LPBYTE>(buffer), &length);
    size = length;
    return static_cast<std::uint32_t>(code);
}

}  // namespace

RegistryCalls SystemRegistryCalls() {
    return {OpenKey, QueryKey, [](HKEY key) { ::RegCloseKey(key); }};
}

}  // namespace quillon::platform
