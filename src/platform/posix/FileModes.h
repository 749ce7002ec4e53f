#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>

namespace quillon::platform {

/// Returns whether the owner may not write the file, which stands for the read-only attribute.
inline bool IsReadOnly(const struct ::stat& status) {
    return S_ISREG(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

/// Returns whether it is a pipe, a socket or a device.
inline bool IsSpecial(const struct ::stat& status) {
    return !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode) && !S_ISLNK(status.st_mode);
}

/// SizeOfFile for a native name in an open directory.
std::optional<std::uint64_t> SizeOfFileAt(int folder, const char* name);
/// RemoveFile, RemoveEmptyDirectory and MayRemove for a native name in an open directory.
bool RemoveFileAt(int folder, const char* name);
bool RemoveEmptyDirectoryAt(int folder, const char* name);
bool MayRemoveAt(int folder, const char* name);

}  // namespace quillon::platform
