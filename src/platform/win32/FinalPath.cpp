#include "platform/win32/FinalPath.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

std::wstring FinalPath(const FileHandle& file, unsigned long volumeName) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            ::GetFinalPathNameByHandleW(file.Get(), path.data(), static_cast<DWORD>(path.size()), volumeName);
        const bool fits = length < path.size();
        path.resize(length);
        if (fits) return path;
    }
}

}  // namespace quillon::platform
