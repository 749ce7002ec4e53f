#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
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

bool MayRemoveAt(int folder, const char* name) {
    struct ::statx facts {};
    if (::statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_TYPE, &facts) != 0) return FailWithErrno();
    if ((facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) return FailWithCode(base::kSharingViolation);
    // What is asked for as the other kind is refused as such only when neither the directory's rights nor
    // any flag keeps it.
    const bool isDirectory = S_ISDIR(facts.stx_mode);
    if (::unlinkat(folder, name, isDirectory ? 0 : AT_REMOVEDIR) == 0)
        return FailWithCode(base::kSharingViolation);  // it has become the other kind
    return errno == (isDirectory ? EISDIR : ENOTDIR) || FailWithErrno();
}

bool RemoveFile(const std::string& path) {
    const auto native = NativePath(path);
    return native ? RemoveFileAt(AT_FDCWD, native->c_str()) : FailWithErrno();
}

bool RemoveEmptyDirectory(const std::string& path) {
    const auto native = NativeName(path);
    return native ? RemoveEmptyDirectoryAt(AT_FDCWD, native->c_str()) : FailWithErrno();
}

bool MayRemove(const std::string& path) {
    const auto native = NativeName(path);
    return native ? MayRemoveAt(AT_FDCWD, native->c_str()) : FailWithErrno();
}

bool MakeOneDirectory(const std::string& path) {
    constexpr mode_t kAsTheProcessLets = 0777;
    const auto native = NativePath(path);
    return (native && ::mkdir(native->c_str(), kAsTheProcessLets) == 0) || FailWithErrno();
}

}  // namespace quillon::platform
