#include "platform/win32/WidePath.h"

#include "base/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

std::optional<std::wstring> WidePath(const std::string& path) {
    if (path.find('\0') == std::string::npos) return base::ToWide(path);
    ::SetLastError(ERROR_INVALID_NAME);
    return std::nullopt;
}

}  // namespace quillon::platform
