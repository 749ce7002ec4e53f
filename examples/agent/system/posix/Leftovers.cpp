#include "system/posix/Leftovers.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "common/TemporaryName.h"

namespace quillon::agent {

namespace {

/// Not a link, nor a pipe.
bool IsUnusedFile(int file) {
    struct stat facts = {};
    return ::fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && ::flock(file, LOCK_EX | LOCK_NB) == 0;
}

}  // namespace

bool LockTemporary(int file) {
    struct stat facts = {};
    const bool isFree = ::flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;  // some know no locks
    return isFree && ::fstat(file, &facts) == 0 && facts.st_nlink > 0;
}

void RemoveLeftovers(int folder) {
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const list = own < 0 ? nullptr : ::fdopendir(own);
    if (list == nullptr) {
        if (own >= 0) ::close(own);
        return;
    }
    while (const dirent* const entry = ::readdir(list)) {
        if (!IsTemporaryName(entry->d_name)) continue;
        const int file =
            ::openat(folder, entry->d_name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (file < 0) continue;
        if (IsUnusedFile(file)) ::unlinkat(folder, entry->d_name, 0);
        ::close(file);
    }
    ::closedir(list);
}

}  // namespace quillon::agent
