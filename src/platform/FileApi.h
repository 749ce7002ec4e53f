#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Handle.h"
#include "quillon/TimePoint.h"

namespace quillon::platform {

/// Files and directories. Paths are library paths in UTF-8. A failure is false or
/// nothing, with the reason in LastError().

struct FileAttributes {
    bool isDirectory = false;  ///< also a link to one
    bool isLink = false;       ///< symbolic link or junction
    bool isReadOnly = false;
    bool isSpecial = false;  ///< pipe, socket or device; those of Windows have no names in directories
};

struct FileStatus {
    bool isDirectory = false;
    long long modificationTime = 0;  ///< whole seconds since 1970, UTC
};

struct DirectoryEntry {
    std::string name;          ///< UTF-8, without the folder
    bool isDirectory = false;  ///< also a link to one
    bool isLink = false;       ///< symbolic link or junction
    // What FolderWalk::List() tells when it is asked to; of a link its own.
    std::uint64_t size = 0;                 ///< of a file
    TimePoint modified, accessed, created;  ///< the last is the epoch where it is not told
};

/// Tells one file or directory from every other one that exists at the same time.
struct FileIdentity {
    std::uint64_t volume = 0;
    std::uint64_t number = 0;

    bool operator==(const FileIdentity&) const = default;
};

/// Returns the identity of what has the name: of a link itself, though not of those on the way.
std::optional<FileIdentity> IdentityOf(const std::string& path);
/// The path of an existing directory without links on the way and without "." and "..".
std::optional<std::string> ResolvedFolder(const std::string& path);
/// Returns a path as the system's own functions and other libraries take it: a native path on
/// Linux, the path itself on Windows.
std::string SystemPath(const std::string& path);
std::optional<FileAttributes> AttributesOf(const std::string& path);
/// `path` in the system's ANSI code page.
std::optional<FileAttributes> AttributesOfAnsiPath(const char* path);
std::optional<FileStatus> StatusOf(const std::string& path);
/// Size of a file that can be opened for reading while others only read.
std::optional<std::uint64_t> SizeOfFile(const std::string& path);
/// Calls `visit` for what matches a wildcard pattern in its last element, "." and
/// ".." included, in the system's order, until it returns false. False when
/// nothing matches (base::kFileNotFound), or when the search broke off.
bool EnumerateMatches(const std::string& pattern, const std::function<bool(const DirectoryEntry&)>& visit);

/// Removes a file or a link to a file, never a directory.
bool RemoveFile(const std::string& path);
/// Removes an empty directory, or a link to a directory itself.
bool RemoveEmptyDirectory(const std::string& path);
/// Returns whether a file, a directory or a link could be removed, but for what is in a directory.
bool MayRemove(const std::string& path);
bool MakeOneDirectory(const std::string& path);
/// Moves a file or directory; an existing target is a failure. A file may go to another volume; it is
/// removed once its copy, with its owner and access, is safe there.
bool MovePath(const std::string& from, const std::string& to);
/// Moves a file in the place of another one, which stays until the moment that its successor has its name.
/// A target that is read-only or special is a failure (base::kAccessDenied), a link is replaced.
bool MoveOverFile(const std::string& from, const std::string& to);
/// Copies a file in the place of an existing one, or to a free name, as MoveOverFile() does; as much as it
/// holds when it is opened.
bool CopyFileOver(const std::string& from, const std::string& to);

/// The content as it is when the file is opened, and whatever size the system
/// reports; what is appended meanwhile is left out. The file may be open for writing
/// elsewhere. At most its first `most` bytes. base::kNotEnoughMemory when there is no memory for it,
/// or when a file that tells no size has more than 64 MiB.
std::optional<std::string> ReadWholeFile(const std::string& path,
                                         std::uint64_t most = std::numeric_limits<std::uint64_t>::max());
/// The same, one piece after the other, until `visit` returns false. False when the
/// file cannot be opened or read.
bool ReadPieces(const std::string& path, const std::function<bool(std::string_view)>& visit);
/// Visits the pieces of a file that has `most` bytes at most, and tells how many are expected in all, 0
/// when that is not known. False also past `most` (base::kNotEnoughMemory).
bool ReadPiecesWithin(const std::string& path, std::uint64_t most,
                      const std::function<void(std::string_view piece, std::uint64_t expected)>& visit);
enum class WriteMode { Truncate, Append };
/// Writes `head`, then `body`, to a file that is made when missing. True when
/// every byte was written and the file closed without error.
bool WriteWholeFile(const std::string& path, std::string_view head, std::string_view body, WriteMode mode);

/// Returns the directory with its trailing backslash.
std::optional<std::string> TemporaryFolder();
/// A new, empty file "<prefix>XXXX.tmp" in a directory, made exclusively and
/// readable by its owner only.
std::optional<std::string> CreateTemporaryFile(const std::string& folder, const std::string& prefix);
/// A new, empty directory of such a name, which only its owner may use.
std::optional<std::string> CreateTemporaryDirectory(const std::string& folder, const std::string& prefix);
std::optional<std::string> CurrentFolder();
bool SetCurrentFolder(const std::string& path);
/// The directory for data of all users.
std::optional<std::string> CommonDataFolder();

/// Roots such as "C:\".
std::vector<std::string> LogicalDrives();
bool IsFixedDrive(const std::string& root);
/// The NT device name of a drive such as "C:".
std::optional<std::string> DeviceNameOfDrive(const std::string& drive);

/// Size of an open file.
std::optional<std::uint64_t> SizeOfOpenFile(const FileHandle& file);

}  // namespace quillon::platform
