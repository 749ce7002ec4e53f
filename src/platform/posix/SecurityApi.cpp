#include "platform/SecurityApi.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr mode_t kAllBits = 07777;

/// The fields before the bytes of the access list.
struct Head {
    ::uid_t owner = 0;
    ::gid_t group = 0;
    ::mode_t mode = 0;
};

/// Most files have no list, many file systems none at all.
bool IsForLackOfList(int code) { return code == ENODATA || code == EOPNOTSUPP; }

std::optional<std::string> ReadAccessList(const std::string& native, std::size_t limit) {
    std::string list(limit, '\0');
    const ::ssize_t length = ::getxattr(native.c_str(), kAccessList, list.data(), list.size());
    if (length < 0 && !IsForLackOfList(errno)) return std::nullopt;
    list.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return list;
}

bool RemoveAccessList(const std::string& native) {
    return ::removexattr(native.c_str(), kAccessList) == 0 || IsForLackOfList(errno);
}

bool WriteAccessList(const std::string& native, const std::string& list) {
    if (list.empty()) return RemoveAccessList(native);
    return ::setxattr(native.c_str(), kAccessList, list.data(), list.size(), 0) == 0;
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
    const std::string native = NativePath(path);
    struct ::stat status {};
    if (::stat(native.c_str(), &status) != 0) return FailWithListErrno();
    if (limit <= sizeof(Head)) {
        errno = ERANGE;
        return FailWithListErrno();
    }
    const auto list = ReadAccessList(native, limit - sizeof(Head));
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
    const std::string native = NativePath(path);
    // The owner first: changing it takes special bits off the mode.
    const bool isWritten = ::chown(native.c_str(), head.owner, head.group) == 0 &&
                           WriteAccessList(native, security.substr(sizeof(head))) &&
                           ::chmod(native.c_str(), head.mode) == 0;
    return isWritten || FailWithErrno();
}

bool RestrictToCurrentUser(const std::string& path) {
    const std::string native = NativePath(path);
    struct ::stat status {};
    if (::stat(native.c_str(), &status) != 0) return FailWithErrno();
    const bool isOurs =
        status.st_uid == ::geteuid() || ::chown(native.c_str(), ::geteuid(), static_cast<::gid_t>(-1)) == 0;
    const bool isRestricted = isOurs && RemoveAccessList(native) && ::chmod(native.c_str(), S_IRWXU) == 0;
    return isRestricted || FailWithErrno();
}

}  // namespace quillon::platform
