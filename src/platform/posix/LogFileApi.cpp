#include "platform/LogFileApi.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

constexpr mode_t kOwnerWritesGroupReads = S_IRUSR | S_IWUSR | S_IRGRP;
constexpr mode_t kOwnerAndGroupEnter = S_IRWXU | S_IRGRP | S_IXGRP;

/// Opens for reading as well, if that is allowed, to look at the end of the file.
int OpenToAppend(const char* path, int more) {
    // A pipe that nobody reads would hold the caller up for ever.
    const int flags = O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | more;
    const int file = ::open(path, O_RDWR | flags, kOwnerWritesGroupReads);
    return file >= 0 || errno != EACCES ? file : ::open(path, O_WRONLY | flags, kOwnerWritesGroupReads);
}

/// Somebody else's link could lead to a file that only this process may write.
bool IsTrustedLink(const char* path) {
    struct ::stat status {};
    const bool isTrusted =
        ::lstat(path, &status) == 0 && (status.st_uid == 0 || status.st_uid == ::geteuid());
    if (!isTrusted) errno = EACCES;
    return isTrusted;
}

FileHandle OpenNoLinkOfOthers(const char* path) {
    FileHandle file(OpenToAppend(path, O_NOFOLLOW));
    if (!file && errno == ELOOP && IsTrustedLink(path)) file.Reset(OpenToAppend(path, 0));
    return file;
}

/// Whoever writes to a closed standard stream would otherwise write into the log.
FileHandle AboveStandardStreams(FileHandle file) {
    if (!file || file.Get() > STDERR_FILENO) return file;
    return FileHandle(::fcntl(file.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool IsOfUse(const FileHandle& file) {
    struct ::stat status {};
    if (::fstat(file.Get(), &status) != 0) return FailWithErrno();
    if (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode)) return true;
    SetLastErrorCode(base::kInvalidParameter);
    return false;
}

bool IsSameFile(const struct ::stat& one, const struct ::stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// The lock is the handle's, on a byte that no log file reaches: the servers of some shared directories keep
/// others from writing what a lock covers.
bool SetLock(const FileHandle& file, short type) {
    constexpr off_t kBeyondTheEnd = off_t{1} << 62;
    struct ::flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kBeyondTheEnd;
    lock.l_len = 1;
    return ::fcntl(file.Get(), F_OFD_SETLK, &lock) == 0;
}

}  // namespace

std::string FixedPath(const std::string& path) {
    const auto native = NativePath(path);
    if (!native || native->empty() || native->starts_with('/')) return path;
    const auto folder = CurrentFolder();
    return folder ? *folder + '\\' + path : path;
}

FileHandle OpenLogFile(const std::string& path) {
    const auto native = NativePath(path);
    FileHandle file = native ? AboveStandardStreams(OpenNoLinkOfOthers(native->c_str())) : FileHandle();
    if (!file) {
        FailWithErrno();
    } else if (!IsOfUse(file)) {
        file.Reset();
    } else {
        ::fcntl(file.Get(), F_SETFL, O_APPEND);
    }
    return file;
}

bool MakeLogDirectory(const std::string& path) {
    const auto native = NativePath(path);
    return (native && ::mkdir(native->c_str(), kOwnerAndGroupEnter) == 0) || FailWithErrno();
}

bool IsDiskFile(const FileHandle& file) {
    struct ::stat status {};
    return ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

bool EndsWithinLine(const FileHandle& file, std::uint64_t size) {
    char last = '\n';
    return size > 0 && ::pread(file.Get(), &last, 1, static_cast<off_t>(size - 1)) == 1 && last != '\n';
}

std::optional<std::uint64_t> SizeWhileAt(const FileHandle& file, const std::string& path) {
    struct ::stat open {
    }, named{};
    const auto native = NativePath(path);
    if (!native || ::fstat(file.Get(), &open) != 0 || ::stat(native->c_str(), &named) != 0 ||
        !IsSameFile(open, named)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(open.st_size);
}

bool TryLockLogFile(const FileHandle& file) {
    return SetLock(file, F_WRLCK) || (errno != EAGAIN && errno != EACCES);
}

void UnlockLogFile(const FileHandle& file) { SetLock(file, F_UNLCK); }

PathUse UseOfPath(const std::string& path) {
    struct ::stat status {};
    const auto native = NativePath(path);
    if (!native) return PathUse::Other;
    if (::lstat(native->c_str(), &status) != 0) return errno == ENOENT ? PathUse::Free : PathUse::Other;
    return S_ISREG(status.st_mode) ? PathUse::File : PathUse::Other;
}

Appended AppendToLogFile(const FileHandle& file, std::string_view text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ::ssize_t count = ::write(file.Get(), text.data() + done, text.size() - done);
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            if (count == 0) errno = ENOSPC;
            FailWithErrno();
            break;
        }
    }
    return {done, done == text.size()};
}

}  // namespace quillon::platform
