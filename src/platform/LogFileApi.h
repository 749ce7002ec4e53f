#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Handle.h"

namespace quillon::platform {

/// The operations that the log file needs beyond FileApi.h. Paths are library paths in UTF-8; the reason
/// of a failure is in LastError().

/// Returns a path that leads to the same place whatever the working directory becomes; the path itself when
/// that cannot be told.
std::string FixedPath(const std::string& path);
/// Opens a log file for appending; one that is missing is made, for its owner to
/// write and its group to read. Others may read, write, rename and delete it meanwhile.
/// No child inherits it, and it never takes the place of a standard stream that is closed.
/// Pipes and sockets are refused, and on Linux a link that belongs neither to this user nor to root.
FileHandle OpenLogFile(const std::string& path);
/// Makes one directory for a log file, which others than the owner and its group cannot enter.
bool MakeLogDirectory(const std::string& path);
/// Returns false for a device, which must not be moved aside.
bool IsDiskFile(const FileHandle& file);
/// Returns whether an open file of `size` bytes ends within a line; false when that cannot be told.
bool EndsWithinLine(const FileHandle& file, std::uint64_t size);
/// Returns the size of the open file when `path` still leads to it; nothing when it was deleted or replaced,
/// or when that cannot be told.
std::optional<std::uint64_t> SizeWhileAt(const FileHandle& file, const std::string& path);

/// Keeps every other process, and every other handle of this one, from locking the open file, until it is
/// unlocked or closed; reading, writing and renaming go on. Does not wait: returns false when it is locked.
/// A file system without locks counts as locked by this process.
bool TryLockLogFile(const FileHandle& file);
/// Ends the lock; a file that is not locked stays as it is.
void UnlockLogFile(const FileHandle& file);

enum class PathUse { Free, File, Other };
/// Tells what stands at a path: nothing, a regular file, or something that must be left alone.
PathUse UseOfPath(const std::string& path);

struct Appended {
    std::uint64_t bytes = 0;  ///< in the file, line ends as the system writes them
    bool isComplete = false;
};
/// Appends a text whose lines end in LF, in one piece as far as the system lets it.
Appended AppendToLogFile(const FileHandle& file, std::string_view text);

}  // namespace quillon::platform
