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

bool Deny() {
    SetLastErrorCode(base::kAccessDenied);
    return false;
}

/// Opens a regular file: a pipe or device could block for ever or never end.
FileHandle OpenRegular(const std::string& path, int flags, struct ::stat& status,
                       mode_t mode = kAsTheProcessLets) {
    const auto native = NativePath(path);
    FileHandle file(native ? ::open(native->c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode) : -1);
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

FileHandle CopyOf(const FileHandle& file) {
    FileHandle copy(::fcntl(file.Get(), F_DUPFD_CLOEXEC, 0));
    if (!copy) FailWithErrno();
    return copy;
}

bool WriteWholeFile(const std::string& path, std::string_view head, std::string_view body, WriteMode mode) {
    struct ::stat status {};
    const int flags = O_WRONLY | O_CREAT | (mode == WriteMode::Append ? O_APPEND : O_TRUNC);
    FileHandle file = OpenRegular(path, flags, status);
    return file && WriteAll(file, head) && WriteAll(file, body) && CloseWritten(std::move(file));
}

}  // namespace quillon::platform
