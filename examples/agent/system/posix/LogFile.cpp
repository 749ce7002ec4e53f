#include "system/LogFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "quillon/PathUtils.h"
#include "system/SystemErrorText.h"
#include "system/posix/Descriptor.h"

namespace quillon::agent {

namespace {

Descriptor OpenToAppend(const char* path, int more) {
    return Descriptor(::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | more,
                             S_IRUSR | S_IWUSR | S_IRGRP));
}

bool IsLinkOfOthers(const char* path) {
    struct stat status {};
    return ::lstat(path, &status) == 0 && S_ISLNK(status.st_mode) && status.st_uid != 0 &&
           status.st_uid != ::geteuid();
}

}  // namespace

/// The logger follows no link of another account, which could lead to a file that only the agent may write.
std::string FaultOfLogFile(const std::string& libraryPath) {
    const std::string path = PathUtils::ToSystemPath(libraryPath);
    if (OpenToAppend(path.c_str(), O_NOFOLLOW)) return {};
    if (errno == ELOOP && IsLinkOfOthers(path.c_str())) return "it is a link of another account";
    if (errno == ELOOP && OpenToAppend(path.c_str(), 0)) return {};
    return SystemErrorText(errno);
}

}  // namespace quillon::agent
