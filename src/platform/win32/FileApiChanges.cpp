#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

bool RemoveFile(const std::string& path) { return ::DeleteFileW(base::ToWide(path).c_str()) != 0; }

bool RemoveEmptyDirectory(const std::string& path) {
    return ::RemoveDirectoryW(base::ToWide(path).c_str()) != 0;
}

bool MakeOneDirectory(const std::string& path) {
    return ::CreateDirectoryW(base::ToWide(path).c_str(), nullptr) != 0;
}

bool MakeTemporaryDirectoryAnsi(const std::string& path) {
    return ::CreateDirectoryA(path.c_str(), nullptr) != 0;
}

bool MovePath(const std::string& from, const std::string& to) {
    return ::MoveFileW(base::ToWide(from).c_str(), base::ToWide(to).c_str()) != 0;
}

bool CopyFileOver(const std::string& from, const std::string& to) {
    return ::CopyFileW(base::ToWide(from).c_str(), base::ToWide(to).c_str(), FALSE) != 0;
}

}  // namespace quillon::platform
