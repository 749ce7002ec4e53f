#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/TextApi.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FileModes.h"

namespace quillon::platform {

std::optional<FileIdentity> IdentityOf(const std::string& path) {
    const auto native = NativeName(path);
    struct ::stat status {};
    if (native && ::lstat(native->c_str(), &status) == 0) return FileIdentity{status.st_dev, status.st_ino};
    FailWithErrno();
    return std::nullopt;
}

std::optional<std::string> ResolvedFolder(const std::string& path) {
    const auto native = NativePath(path);
    char* const resolved = native ? ::realpath(native->c_str(), nullptr) : nullptr;
    if (resolved == nullptr) {
        FailWithErrno();
        return std::nullopt;
    }
    std::string folder = LibraryPath(resolved);
    std::free(resolved);
    return folder;
}

std::optional<FileAttributes> AttributesOf(const std::string& path) {
    struct ::stat status {};
    const auto isThere = [&status](const std::optional<std::string>& name) {
        return name && ::lstat(name->c_str(), &status) == 0;
    };
    const auto native = NativePath(path);
    // With a trailing separator lstat follows a link, and so says only that a directory is meant; the
    // attributes are those of the name without the separator.
    const bool exists = native && isThere(native) && (!native->ends_with('/') || isThere(NativeName(path)));
    if (!exists) {
        FailWithErrno();
        return std::nullopt;
    }
    FileAttributes attributes;
    attributes.isLink = S_ISLNK(status.st_mode);
    attributes.isReadOnly = IsReadOnly(status);
    attributes.isSpecial = IsSpecial(status);
    struct ::stat target {};
    if (attributes.isLink && ::stat(native->c_str(), &target) == 0) status = target;
    attributes.isDirectory = S_ISDIR(status.st_mode);
    return attributes;
}

std::optional<FileAttributes> AttributesOfAnsiPath(const char* path) { return AttributesOf(path); }

std::optional<FileStatus> StatusOf(const std::string& path) {
    const auto native = NativePath(path);
    struct ::stat status {};
    if (native && ::stat(native->c_str(), &status) == 0) {
        return FileStatus{S_ISDIR(status.st_mode), status.st_mtim.tv_sec};
    }
    FailWithErrno();
    return std::nullopt;
}

std::optional<std::uint64_t> SizeOfFile(const std::string& path) {
    const auto native = NativePath(path);
    if (native) return SizeOfFileAt(AT_FDCWD, native->c_str());
    FailWithErrno();
    return std::nullopt;
}

std::optional<std::uint64_t> SizeOfFileAt(int folder, const char* name) {
    constexpr mode_t kAllRead = S_IRUSR | S_IRGRP | S_IROTH;
    struct ::stat status {};
    if (::fstatat(folder, name, &status, 0) != 0) {
        FailWithErrno();
        return std::nullopt;
    }
    const bool isDenied =
        (status.st_mode & kAllRead) != kAllRead && ::faccessat(folder, name, R_OK, AT_EACCESS) != 0;
    if (S_ISDIR(status.st_mode) || isDenied) {
        SetLastErrorCode(base::kAccessDenied);
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::uint64_t> SizeOfOpenFile(const FileHandle& file) {
    struct ::stat status {};
    if (::fstat(file.Get(), &status) == 0) return static_cast<std::uint64_t>(status.st_size);
    FailWithErrno();
    return std::nullopt;
}

}  // namespace quillon::platform
