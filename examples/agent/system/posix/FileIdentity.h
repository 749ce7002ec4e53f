#pragma once

#include <sys/stat.h>

#include <compare>
#include <optional>
#include <string>

namespace quillon::agent {

/// Which file it is, whatever its names are.
struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;
    auto operator<=>(const FileIdentity&) const = default;
};

/// Returns the identity of an open file; nothing, with errno, when the system does not tell.
inline std::optional<FileIdentity> IdentityOf(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

/// The same for what has a native path: of the link itself when it is one.
inline std::optional<FileIdentity> IdentityOf(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

}  // namespace quillon::agent
