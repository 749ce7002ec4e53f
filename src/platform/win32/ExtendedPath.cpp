#include "platform/win32/ExtendedPath.h"

#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

std::optional<std::wstring> ExtendedPath(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide || wide->starts_with(LR"(\\?\)")) return wide;
    std::wstring full(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            ::GetFullPathNameW(wide->c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        if (length == 0) return std::nullopt;
        const bool fits = length < full.size();
        full.resize(length);
        if (fits) break;
    }
    if (full.starts_with(LR"(\\.\)")) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return std::nullopt;
    }
    return full.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + full.substr(1) : LR"(\\?\)" + full;
}

}  // namespace quillon::platform
