#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/win32/OpenFile.h"
#include "platform/win32/ShareModes.h"
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

bool MayRemove(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide) return false;
    const FileHandle file(::CreateFileW(wide->c_str(), DELETE | FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                        OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    const auto isReadOnly = file ? IsReadOnly(file) : std::nullopt;
    return isReadOnly && (!*isReadOnly || FailWithCode(ERROR_ACCESS_DENIED));
}

bool MakeOneDirectory(const std::string& path) {
    const auto wide = WidePath(path);
    return wide && ::CreateDirectoryW(wide->c_str(), nullptr) != 0;
}

}  // namespace quillon::platform
