#include "platform/CodePageApi.h"

#include <limits>

#include "base/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

static_assert(kOemCodePage == CP_OEMCP);

std::optional<std::string> CodePageToUtf8(std::string_view bytes, std::uint32_t page) {
    if (bytes.empty()) return std::string();
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return std::nullopt;
    }
    const int length = static_cast<int>(bytes.size());
    const int size = ::MultiByteToWideChar(page, 0, bytes.data(), length, nullptr, 0);
    if (size <= 0) return std::nullopt;
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(page, 0, bytes.data(), length, wide.data(), size);
    return base::ToUtf8(wide);
}

}  // namespace quillon::platform
