#include "platform/ModuleApi.h"

#include "platform/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

std::optional<std::string> ExecutablePath() {
    constexpr std::size_t kLongestPath = 32'768;
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) return std::nullopt;
        if (length < path.size()) return ToUtf8(std::wstring_view(path).substr(0, length));
        if (path.size() >= kLongestPath) return std::nullopt;
        path.resize(path.size() * 2);
    }
}

}  // namespace quillon::platform
