#include "platform/SecurityApi.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/Handle.h"
#include "platform/native/NativePath.h"
#include "platform/posix/AccessList.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

constexpr mode_t kAllBits = 07777;

/// The fields before the bytes of the access list.
struct Head {
    ::uid_t owner = 0;
    ::gid_t group = 0;
    ::mode_t mode = 0;
};

/// Opens the file itself, to which the rights are given whatever has its name by then; a link, which
/// another user may have put there, is refused.
FileHandle OpenItself(const std::string& path) {
    const auto native = NativePath(path);
    FileHandle file(native ? ::open(native->c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC) : -1);
    struct ::stat status {};
    if (!file || ::fstat(file.Get(), &status) != 0) return {};
    if (!S_ISLNK(status.st_mode)) return file;
    errno = ELOOP;
    return {};
}

bool GiveTo(const FileHandle& file, ::uid_t owner, ::gid_t group) {
    return ::fchownat(file.Get(), "", owner, group, AT_EMPTY_PATH) == 0;
}

std::nullopt_t FailWithListErrno() {
    if (errno == ERANGE) {
        SetLastErrorCode(base::kInsufficientBuffer);
    } else {
        FailWithErrno();
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> ReadSecurity(const std::string& path, std::size_t limit) {
    const auto native = NativePath(path);
    struct ::stat status {};
    if (!native || ::stat(native->c_str(), &status) != 0) return FailWithListErrno();
    if (limit <= sizeof(Head)) {
        errno = ERANGE;
        return FailWithListErrno();
    }
    const auto list = ReadAccessList(*native, limit - sizeof(Head));
    if (!list) return FailWithListErrno();
    const Head head{status.st_uid, status.st_gid, status.st_mode & kAllBits};
    return std::string(reinterpret_cast<const char*>(&head), sizeof(head)) + *list;
}

bool WriteSecurity(const std::string& path, const std::string& security) {
    Head head;
    if (security.size() < sizeof(head)) {
        errno = EINVAL;
        return FailWithErrno();
    }
    std::memcpy(&head, security.data(), sizeof(head));
    const FileHandle file = OpenItself(path);
    if (!file) return FailWithErrno();
    const std::string name = NameOfDescriptor(file.Get());
    // The owner first: changing it takes special bits off the mode.
    const bool isWritten = GiveTo(file, head.owner, head.group) &&
                           WriteAccessList(name, security.substr(sizeof(head))) &&
                           ::chmod(name.c_str(), head.mode) == 0;
    return isWritten || FailWithErrno();
}

bool RestrictToCurrentUser(const std::string& path) {
    const FileHandle file = OpenItself(path);
    struct ::stat status {};
    if (!file || ::fstat(file.Get(), &status) != 0) return FailWithErrno();
    const std::string name = NameOfDescriptor(file.Get());
    const bool isOurs = status.st_uid == ::geteuid() || GiveTo(file, ::geteuid(), static_cast<::gid_t>(-1));
    const bool isRestricted = isOurs && WriteAccessList(name, {}) && ::chmod(name.c_str(), S_IRWXU) == 0;
    return isRestricted || FailWithErrno();
}

}  // namespace quillon::platform
