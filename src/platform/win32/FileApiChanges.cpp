#include "platform/FileApi.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

bool RemoveFile(const std::string& path) {
    const auto wide = WidePath(path);
    return wide && ::DeleteFileW(wide->c_str()) != 0;
}

bool RemoveEmptyDirectory(const std::string& path) {
    const auto wide = WidePath(path);
    return wide && ::RemoveDirectoryW(wide->c_str()) != 0;
}

bool MakeOneDirectory(const std::string& path) {
    const auto wide = WidePath(path);
    return wide && ::CreateDirectoryW(wide->c_str(), nullptr) != 0;
}

}  // namespace quillon::platform
