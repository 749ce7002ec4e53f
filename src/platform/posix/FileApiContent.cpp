#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FileModes.h"

namespace quillon::platform {

namespace {

constexpr mode_t kAsTheProcessLets = 0666;
constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

bool Deny() {
    SetLastErrorCode(base::kAccessDenied);
    return false;
}

/// Opens a regular file: a pipe or device could block for ever or never end.
FileHandle OpenRegular(const std::string& path, int flags, struct ::stat& status,
                       mode_t mode = kAsTheProcessLets) {
    FileHandle file(::open(NativePath(path).c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode));
    if (!file || ::fstat(file.Get(), &status) != 0) {
        FailWithErrno();
        return {};
    }
    if (S_ISREG(status.st_mode)) return file;
    Deny();
    return {};
}

/// A delayed write may fail only here.
bool CloseWritten(FileHandle file) { return ::close(file.Release()) == 0 || FailWithErrno(); }

bool CopyContent(const FileHandle& source, const FileHandle& target) {
    std::string buffer(kPieceSize, '\0');
    for (;;) {
        const auto count = ReadSome(source, buffer.data(), buffer.size());
        if (!count) return false;
        if (*count == 0) return true;
        if (!WriteAll(target, std::string_view(buffer).substr(0, *count))) return false;
    }
}

/// Copies what the copy of Windows takes along in addition to the content.
bool CopyModeAndTime(const struct ::stat& source, const FileHandle& target) {
    const ::timespec times[] = {{0, UTIME_OMIT}, source.st_mtim};
    constexpr mode_t kPermissions = 0777;
    return (::fchmod(target.Get(), source.st_mode & kPermissions) == 0 &&
            ::futimens(target.Get(), times) == 0) ||
           FailWithErrno();
}

}  // namespace

FileHandle OpenForReading(const std::string& path) {
    struct ::stat status {};
    return OpenRegular(path, O_RDONLY, status);
}

void PrepareMemory(void* memory, std::size_t size) {
    constexpr std::size_t kLargePage = std::size_t{2} << 20;
    if (size < 2 * kLargePage) return;
    // Whole large pages only; a refusal changes nothing but the time that it takes.
    const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + kLargePage - 1) & ~(kLargePage - 1);
    const auto end = (reinterpret_cast<std::uintptr_t>(memory) + size) & ~(kLargePage - 1);
    ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

std::optional<std::size_t> ReadSome(const FileHandle& file, char* buffer, std::size_t size) {
    for (;;) {
        const ::ssize_t count = ::read(file.Get(), buffer, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno == EINTR) continue;
        FailWithErrno();
        return std::nullopt;
    }
}

bool WriteAll(const FileHandle& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ::ssize_t count = ::write(file.Get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return FailWithErrno();
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool WriteWholeFile(const std::string& path, std::string_view head, std::string_view body, WriteMode mode) {
    struct ::stat status {};
    const int flags = O_WRONLY | O_CREAT | (mode == WriteMode::Append ? O_APPEND : O_TRUNC);
    FileHandle file = OpenRegular(path, flags, status);
    return file && WriteAll(file, head) && WriteAll(file, body) && CloseWritten(std::move(file));
}

bool CopyFileOver(const std::string& from, const std::string& to) {
    struct ::stat source {};
    struct ::stat target {};
    const FileHandle reader = OpenRegular(from, O_RDONLY, source);
    if (!reader) return false;
    // A file that only some users may read must not be readable for others while it is copied.
    FileHandle writer = OpenRegular(to, O_WRONLY | O_CREAT, target, kOwnerOnly);
    if (!writer) return false;
    if (source.st_dev == target.st_dev && source.st_ino == target.st_ino) {
        SetLastErrorCode(base::kSharingViolation);
        return false;
    }
    if (IsReadOnly(target)) return Deny();
    if (::ftruncate(writer.Get(), 0) != 0) return FailWithErrno();
    return CopyContent(reader, writer) && CopyModeAndTime(source, writer) && CloseWritten(std::move(writer));
}

FileHandle OpenForCapture(const std::string& path) {
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW;
    FileHandle file(::open(NativePath(path).c_str(), flags, kOwnerOnly));
    if (!file) FailWithErrno();
    return file;
}

}  // namespace quillon::platform
