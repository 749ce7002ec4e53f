#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/native/NativePath.h"
#include "platform/native/Wildcards.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FolderEntry.h"

namespace quillon::platform {

DirectoryEntry ToEntry(int folder, const ::dirent& found) {
    DirectoryEntry entry;
    entry.name = LibraryName(found.d_name);
    entry.isDirectory = found.d_type == DT_DIR;
    entry.isLink = found.d_type == DT_LNK;
    if (found.d_type != DT_LNK && found.d_type != DT_UNKNOWN) return entry;
    struct ::stat status {};
    if (found.d_type == DT_UNKNOWN && ::fstatat(folder, found.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        entry.isLink = S_ISLNK(status.st_mode);
    }
    entry.isDirectory = ::fstatat(folder, found.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
    return entry;
}

bool EnumerateMatches(const std::string& pattern, const std::function<bool(const DirectoryEntry&)>& visit) {
    const auto native = NativePath(pattern);
    if (!native) return FailWithErrno();
    const std::size_t name = native->rfind('/') + 1;  // 0 when there is none
    const OpenFolder folder(::opendir(name == 0 ? "." : native->substr(0, name).c_str()));
    if (!folder) return FailWithErrno();
    // Compared as they are listed: two names that are no UTF-8 are not the same.
    const std::string wildcards = LibraryName(std::string_view(*native).substr(name));
    bool hasMatch = false;
    errno = 0;
    while (const ::dirent* const found = ::readdir(folder.get())) {
        if (!wildcards.empty() && MatchesWildcards(LibraryName(found->d_name), wildcards)) {
            hasMatch = true;
            if (!visit(ToEntry(::dirfd(folder.get()), *found))) return true;
        }
        errno = 0;
    }
    if (errno != 0) return FailWithErrno();
    if (!hasMatch) SetLastErrorCode(base::kFileNotFound);
    return hasMatch;
}

}  // namespace quillon::platform
