#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/TextApi.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FileModes.h"

namespace quillon::platform {

namespace {

bool LeadsToFolder(int folder, const char* name) {
    struct ::stat status {};
    return ::fstatat(folder, name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

bool Unlink(int folder, const char* name, int flags) {
    return ::unlinkat(folder, name, flags) == 0 || FailWithErrno();
}

bool IsFree(const char* path) {
    struct ::stat status {};
    if (::lstat(path, &status) != 0) return true;
    errno = EEXIST;
    return FailWithErrno();
}

bool MoveToOtherVolume(const std::string& from, const std::string& to) {
    const auto attributes = AttributesOf(from);
    if (!attributes || attributes->isDirectory || attributes->isLink) {
        errno = EXDEV;
        return FailWithErrno();
    }
    const std::string source = NativePath(from), target = NativePath(to);
    if (!IsFree(target.c_str()) || !CopyFileOver(from, to)) return false;
    if (::unlink(source.c_str()) == 0) return true;
    FailWithErrno();
    ::unlink(target.c_str());
    return false;
}

/// Moves a file on file systems that cannot rename without replacing.
bool MoveToFreeName(const char* from, const char* to) {
    return IsFree(to) && (::rename(from, to) == 0 || FailWithErrno());
}

}  // namespace

bool RemoveFileAt(int folder, const char* name) {
    struct ::stat status {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return FailWithErrno();
    if (IsReadOnly(status) || LeadsToFolder(folder, name)) {
        SetLastErrorCode(base::kAccessDenied);
        return false;
    }
    return Unlink(folder, name, 0);
}

bool RemoveEmptyDirectoryAt(int folder, const char* name) {
    struct ::stat status {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return FailWithErrno();
    const bool isFolderLink = S_ISLNK(status.st_mode) && LeadsToFolder(folder, name);
    return Unlink(folder, name, isFolderLink ? 0 : AT_REMOVEDIR);
}

bool RemoveFile(const std::string& path) { return RemoveFileAt(AT_FDCWD, NativePath(path).c_str()); }

bool RemoveEmptyDirectory(const std::string& path) {
    return RemoveEmptyDirectoryAt(AT_FDCWD, NativeName(path).c_str());
}

bool MakeOneDirectory(const std::string& path) {
    constexpr mode_t kAsTheProcessLets = 0777;
    return ::mkdir(NativePath(path).c_str(), kAsTheProcessLets) == 0 || FailWithErrno();
}

bool MakeTemporaryDirectoryAnsi(const std::string& path) {
    return ::mkdir(NativePath(base::ToUtf8(AnsiToWide(path))).c_str(), S_IRWXU) == 0 || FailWithErrno();
}

bool MovePath(const std::string& from, const std::string& to) {
    const std::string nativeFrom = NativeName(from);
    const std::string nativeTo = NativeName(to);
    if (::renameat2(AT_FDCWD, nativeFrom.c_str(), AT_FDCWD, nativeTo.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno == EXDEV) return MoveToOtherVolume(from, to);
    if (errno == EINVAL || errno == ENOSYS) return MoveToFreeName(nativeFrom.c_str(), nativeTo.c_str());
    return FailWithErrno();
}

}  // namespace quillon::platform
