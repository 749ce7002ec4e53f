#include "platform/posix/AccessList.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>

namespace quillon::platform {

namespace {

constexpr const char* kAccessList = "system.posix_acl_access";

/// Most files have no list, many file systems none at all.
bool IsForLackOfList(int code) { return code == ENODATA || code == EOPNOTSUPP; }

}  // namespace

std::optional<std::string> ReadAccessList(const std::string& native, std::size_t limit) {
    std::string list(limit, '\0');
    const ::ssize_t length = ::getxattr(native.c_str(), kAccessList, list.data(), list.size());
    if (length < 0 && !IsForLackOfList(errno)) return std::nullopt;
    list.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return list;
}

bool WriteAccessList(const std::string& native, const std::string& list) {
    if (list.empty()) return ::removexattr(native.c_str(), kAccessList) == 0 || IsForLackOfList(errno);
    return ::setxattr(native.c_str(), kAccessList, list.data(), list.size(), 0) == 0;
}

bool CopyAccess(int source, int target, mode_t mode, bool isGroupKept) {
    constexpr std::size_t kMostOfList = 64 * 1024;
    constexpr mode_t kWithoutGroup = S_IRWXU | S_IRWXO;
    const auto list = ReadAccessList(NameOfDescriptor(source), kMostOfList);
    const bool isKept = isGroupKept && list;
    return WriteAccessList(NameOfDescriptor(target), isKept ? *list : std::string()) &&
           ::fchmod(target, isKept ? mode : mode & kWithoutGroup) == 0;
}

std::string NameOfDescriptor(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

}  // namespace quillon::platform
