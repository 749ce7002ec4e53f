#include "platform/ModuleApi.h"

#include "platform/TextApi.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

std::optional<std::string> ExecutablePath() {
    constexpr std::size_t kLongestPath = 32'768;
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) return std::nullopt;
        if (length < path.size()) return PathFromWide(std::wstring_view(path).substr(0, length));
        if (path.size() >= kLongestPath) return std::nullopt;
        path.resize(path.size() * 2);
    }
}

HINSTANCE ModuleOfAddress(void* address) {
    HMODULE module = nullptr;
    const BOOL found = ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<LPCWSTR>(address), &module);
    return found != 0 ? module : nullptr;
}

}  // namespace quillon::platform
