#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "quillon/Export.h"
#include "quillon/TimePoint.h"

namespace quillon {

/// Asks and changes the file system, and reads and writes text files in any encoding.
///
/// Narrow paths are UTF-8 unless an operation says otherwise, wide ones UTF-16; paths past 260
/// characters work. On Linux a listed name that holds a backslash or bytes that are no UTF-8 has
/// characters U+F000 + byte in their place, which lead to that name again. Failure is reported by
/// the result (false, 0 or an empty text). The system's last error then says why, as a Windows code
/// on both systems: 2 (ERROR_FILE_NOT_FOUND) or 3 (ERROR_PATH_NOT_FOUND) for what is missing, 5
/// (ERROR_ACCESS_DENIED), 32 (ERROR_SHARING_VIOLATION), 112 (ERROR_DISK_FULL), 123
/// (ERROR_INVALID_NAME) for a path with a NUL, and the codes that are named below; no log entry hides
/// it. Sizes, readers and FindFiles(), whose success may look the same, then set 0. A file whose size
/// the system tells as 0, as those of /proc, is read only if it ends within 64 MiB (else 8,
/// ERROR_NOT_ENOUGH_MEMORY). Nothing is logged and nothing thrown unless it is said. Entries go to
/// the registered logger. Every operation is thread-safe as far as the file system is: between a test
/// and a change another process may step in.
///
/// @code
/// const std::string directory = FileSystemUtils::GetSystemTempPath() + "logs";
/// FileSystemUtils::MakeDirectory(directory);
/// const std::string path = directory + "\\a.txt";
/// if (FileSystemUtils::WriteUtf8File(path, "first\r\n")) {
///     FileSystemUtils::FileEncoding detected = FileSystemUtils::NOTSET;
///     std::cout << FileSystemUtils::ReadFile(path, detected, FileSystemUtils::NOTSET);
///     std::cout << FileSystemUtils::FileEncodingToString(detected) << '\n';  // UTF8
/// }
/// FileSystemUtils::EraseDirectory(directory);
/// @endcode
class QUILLON_API FileSystemUtils {
public:
    FileSystemUtils() = delete;

    // --- Tests and sizes ---

    /// Returns whether there is a file, a directory or a link of that name; a link counts
    /// though its target is missing. The pointer must not be null.
    static bool Exists(const char* path);
    static bool Exists(const std::string& path);
    /// Returns the same, and writes the Debug entry "Cannot get attributes of 'X' because: ..."
    /// for a path whose attributes cannot be read, a missing one included.
    static bool Exists(const wchar_t* path);
    static bool Exists(const std::wstring& path);
    /// Tells also what it is and, unless `modificationTime` is null, when it was last changed,
    /// in whole seconds since 1970, UTC. Links are followed, and the path is normalised first
    /// (PathUtils::Normalise()). When false is returned, both stay as they were.
    static bool Exists(const char* path, bool& isDirectory, long long* modificationTime);
    static bool Exists(const std::string& path, bool& isDirectory, long long* modificationTime);
    /// Returns whether the path, which is in the system's ANSI code page, leads to a directory
    /// or to a link to one.
    static bool IsDirectory(const char* path);
    /// Returns the same of a UTF-16 or UTF-8 path, which is normalised first.
    static bool IsDirectory(const wchar_t* path);
    static bool IsDirectory(const std::string& path);
    static bool IsDirectory(const std::wstring& path);
    /// Returns the size of a file; 0 for one that is missing, a directory, not readable or, on
    /// Windows, open for writing elsewhere, so a 0 does not prove that it is empty. A path that
    /// begins with "\Device\" is taken too.
    static std::uint64_t GetFileSizeInBytes(const std::string& path);
    /// Returns the sum of the sizes of the directory's files, and with `recursive` of all below
    /// it; links to directories are not entered. What cannot be read counts 0, and a directory
    /// that cannot be listed ends the sum; the last error tells the first of these.
    static std::uint64_t GetDirectorySizeInBytes(const std::string& directory, bool recursive);
    /// Returns false always; ProcessUtils::IsOsProcess() tells by a product's name.
    static bool IsOperatingSystemProcess(const std::string& path);

    // --- Listings: results are appended ---

    /// Appends the paths of the files, not directories, that match a pattern with '*' and '?'
    /// in its last element, in the system's order, and returns their number; the vector may be
    /// null. 0 means that nothing matches (2, ERROR_FILE_NOT_FOUND) or that the search failed. A pattern
    /// without a directory is matched in the working directory, but each result is then a backslash and the
    /// name.
    static std::uint32_t FindFiles(const char* pattern, std::vector<std::string>* files);
    static std::uint32_t FindFiles(const std::string& pattern, std::vector<std::string>* files);
    static std::uint32_t FindFiles(const wchar_t* pattern, std::vector<std::wstring>* files);
    static std::uint32_t FindFiles(const std::wstring& pattern, std::vector<std::wstring>* files);
    /// Expands %NAME% references in the pattern, whatever text the values hold, then does the
    /// same.
    static std::uint32_t FindFilesExpandingEnvVars(const std::string& pattern,
                                                   std::vector<std::string>* files);
    static std::uint32_t FindFilesExpandingEnvVars(const std::wstring& pattern,
                                                   std::vector<std::wstring>* files);
    /// Appends the paths of all files below the directory: a directory's own files first, then
    /// its subdirectories' one after the other. Links to directories are not entered. Returns
    /// false when some directory cannot be listed; the paths found until then stay in `files`.
    static bool GetAllFilesWithin(const std::string& directory, std::vector<std::string>& files);
    /// Holds one entry that WalkFiles() finds.
    struct WalkEntry {
        std::string path;          ///< UTF-8, below the directory as it was given
        bool isDirectory = false;  ///< also a link to one, which is not entered
        bool isLink = false;       ///< symbolic link or junction; size and times are its own
        std::uint64_t size = 0;    ///< bytes of a file as the directory tells them, readable or not
        TimePoint modified, accessed;
        TimePoint created;  ///< the epoch where the file system does not tell it
    };
    /// Limits WalkFiles(); as it is made, it does not.
    struct WalkOptions {
        std::uint32_t deepest = ~std::uint32_t{0};  ///< levels below the directory; 0: its own entries only
        std::uint64_t mostEntries = ~std::uint64_t{0};
        bool withDirectories = false;       ///< whether directories and links to them are visited as well
        std::function<bool()> isCancelled;  ///< asked before each entry, on the caller's thread; may be empty
    };
    /// Tells how WalkFiles() ended.
    enum class WalkEnd : std::int32_t {
        Complete,   ///< everything within `deepest` was visited that was there
        Stopped,    ///< the visitor returned false
        Cancelled,  ///< isCancelled() returned true
        TooMany,    ///< there are more than mostEntries, of which that many were visited
        Failed      ///< the directory cannot be listed, or descriptors or memory ran out: the last error says
    };
    /// Calls `visit` with each entry below the directory, in the order of GetAllFilesWithin(), a
    /// directory before what is in it. Sizes and times come from the same pass; one who needs them
    /// saves a second walk. A subdirectory that vanishes, or cannot be listed, is passed over.
    /// What the visitor throws reaches the caller.
    static WalkEnd WalkFiles(const std::string& directory, const WalkOptions& options,
                             const std::function<bool(const WalkEntry&)>& visit);
    /// Appends the names, not the paths, of the directory's files or subdirectories ("." and
    /// ".." are left out). Returns false when it cannot be listed.
    static bool GetImmediateFilesWithin(const std::string& directory, std::vector<std::string>& names);
    static bool GetImmediateDirectoriesWithin(const std::string& directory, std::vector<std::string>& names);
    /// Appends the roots of the fixed disks as "C:", without a backslash. Returns false when
    /// the system tells no drives at all.
    static bool GetFixedDisks(std::vector<std::wstring>& disks);

    // --- Plain reading: text mode, no detection of encodings ---

    /// Returns the bytes in text mode, whatever their encoding: CR LF becomes LF, and the byte
    /// 0x1A ends the text. The empty text for a file that cannot be read.
    static std::string ReadContentsOfFile(const std::string& path);
    /// Replaces the content of `lines` by the lines of that text without their line feeds; a
    /// text that ends with one gives a last, empty line, an empty text no line. Reading ends
    /// with a line of more than 32,767 bytes, which is cut there.
    static void ReadContentsOfFile(const std::string& path, std::vector<std::string>& lines);
    /// Returns the first line, of 64 MiB at most (else 8); reads no more of the file than it takes.
    static std::string ReadSingleLineFromFile(const char* path);
    static std::string ReadSingleLineFromFile(const std::string& path);

    // --- Version resources ---

    /// Keeps texts of a file's version resource in UTF-8, each empty when it is not known.
    struct VersionInformation {
        std::string fileVersion;     ///< the fixed version, "1.2.3.4"
        std::string productVersion;  ///< the same of the product
        std::string fileDescription;
        std::string productName;
        std::string originalFilename;

        bool operator==(const VersionInformation&) const = default;
    };

    /// Returns the texts of a file's version resource. `language` is four hexadecimal digits
    /// such as "0409", or empty for the first language that has a text. Control characters are
    /// left out.
    ///
    /// Answers are kept for the process's life, by path and language as they are given, while
    /// the file's modification time stays; so is the answer that a file has no resource.
    /// Callers that ask for one path at once read it once. Empty texts, not kept, are returned
    /// for a missing file (logged at Trace), a resource that cannot be read (Warn "Could not
    /// get version of 'X' because: ..."), one without the fixed part or its signature (Debug),
    /// and an empty path (Debug). What the cache does is logged at Trace and Debug. The last error is
    /// 0 for a version, 1812 (ERROR_RESOURCE_DATA_NOT_FOUND; 1813 and 1814 on Windows) without a
    /// resource, and 13 (ERROR_INVALID_DATA) without the fixed part or its signature.
    static VersionInformation GetVersionInformation(const std::string& filePath, const std::string& language);
    /// Forgets all answers that are kept.
    static void ClearVersionInformationCache();

    // --- Places ---

    /// Returns the temporary directory with its trailing backslash, found once per process;
    /// empty when the system does not tell it. The reference stays valid for the process's
    /// life.
    static const std::string& GetSystemTempPath();
    /// Returns the process's current directory; empty on failure.
    static std::string GetWorkingDirectory();
    /// Changes the current directory of the whole process, all threads included.
    static bool SetWorkingDirectory(const std::string& path);
    /// Changes "\Device\X", in any case, to "\\?\X" in place; any other text stays.
    static void DeviceNameToVolumeNameFormat(std::wstring& path);
    /// Returns "C:\a" for "\Device\HarddiskVolume3\a", devices being compared
    /// case-insensitively; the input itself when no drive has that device.
    static std::string TranslateNtPathToWin32Path(const std::string& ntPath);

    // --- Changes ---

    /// Deletes one file, or a link itself, never a directory. On failure returns false, leaves
    /// the system's last error for the caller and, unless `quiet`, writes the Error entry
    /// "Cannot delete 'X' because: ...". A read-only file is not deleted (5,
    /// ERROR_ACCESS_DENIED).
    static bool EraseFile(const char* path, bool quiet);
    static bool EraseFile(const std::string& path, bool quiet);
    /// Deletes a directory with all that is in it. Links and junctions are removed, never
    /// followed, also when `directory` is one, and a file system that is mounted in the tree is not
    /// touched (17, ERROR_NOT_SAME_DEVICE). The first failure ends it with false: what was
    /// deleted stays deleted, and a file that cannot be is logged as by EraseFile(). False,
    /// without an entry, when there is no such directory (2, 3, or 267, ERROR_DIRECTORY, for a file).
    static bool EraseDirectory(const std::string& directory);
    /// Makes the missing ancestors of a path, not the path itself; true when none was missing.
    /// On failure those already made stay.
    static bool MakeDirectories(const std::string& path);
    /// Makes the ancestors and the path; false when it exists already (183,
    /// ERROR_ALREADY_EXISTS).
    static bool MakeDirectory(const std::string& path);
    /// Moves a file or directory. With `overwrite` a file takes the place of an existing file at
    /// once. Before any other target, such as a whole directory, is deleted, the source is moved
    /// beside it (`<name>.quillon-<number>`): nothing is deleted when that fails, as to another
    /// volume (a directory or a link: 17) or on a full disk, when the source is missing (2), when
    /// one of the two holds the other (183, 87), or when the target itself is in use or mounted (32).
    /// A file that somebody writes to meanwhile does not go to another volume (32). A path that is
    /// renamed to itself stays, with true; to another spelling it takes that. A failed deletion is
    /// logged as by EraseFile(). A pipe, a socket or a device is not replaced (5). Without
    /// `overwrite` an existing target gives false (183, ERROR_ALREADY_EXISTS). A failed move leaves
    /// the code in errno too.
    static bool RenameFile(const std::string& from, const std::string& to, bool overwrite);
    /// Renames path.(N-1) to path.N, and so on down to path to path.1, after deleting path.N, N
    /// being `generations`; a gap in the numbers ends the row. Returns false at the first move
    /// that fails, with errno as by RenameFile(), and with an Error entry when `generations` is
    /// 0.
    static bool RenameGenerations(const std::string& path, std::uint32_t generations);
    /// Copies a file's content, as much as it holds when it is opened, its time and its mode or
    /// attributes over `to`. A new file's access is the directory's; one that is replaced keeps
    /// its owner and, on Windows, its access. The target is replaced at once when its content is
    /// on the disk, and stays as it is on failure; a link there is replaced, not followed.
    /// Failures: a read-only target or a directory (5, ERROR_ACCESS_DENIED), the source itself
    /// (32, ERROR_SHARING_VIOLATION), a source that tells no size and does not end (8).
    static bool DuplicateFile(const std::string& from, const std::string& to);
    /// Copies the content as DuplicateFile() does, then the security as CopyFileAcl() does;
    /// true when both succeeded. Returns false for a source that does not exist, and throws
    /// std::filesystem::filesystem_error ("copy(p1, p2): invalid arguments") when the content
    /// cannot be copied. The throw may lose the last error; code().value() is what it was.
    static bool FileCopy(const std::string& source, const std::string& destination);
    /// Copies owner, group and both access lists. For that it enables SeSecurityPrivilege and
    /// SeRestorePrivilege in the process and disables both afterwards, also when they were
    /// enabled before. Returns false when the process was not given one or the security takes
    /// more than 260 bytes (122, ERROR_INSUFFICIENT_BUFFER), and with an Error entry when it cannot
    /// be written. A link is refused as the destination on Linux (1921).
    [[nodiscard]] static bool CopyFileAcl(const std::string& source, const std::string& destination);
    /// Leaves the file or directory to the user that the process runs as, with every right and
    /// without inheritance; nobody else keeps access. A link is not followed but refused (1921,
    /// ERROR_CANT_RESOLVE_FILENAME).
    [[nodiscard]] static bool SecureFile(const std::string& path);
    /// Enables or disables a privilege of the whole process by its name, such as
    /// L"SeBackupPrivilege". Returns false for an unknown name (1313, ERROR_NO_SUCH_PRIVILEGE)
    /// and for one that the process was not given (1300, ERROR_NOT_ALL_ASSIGNED).
    static bool SetProcessPrivilege(const wchar_t* name, bool enable);
    /// Makes a new, empty file "vntXXXX.tmp" in the temporary directory, which no other caller
    /// gets and only its owner may read, and returns its path; empty on failure. The caller
    /// deletes it.
    static std::string GetTemporaryFile();
    /// Makes a new, empty directory of such a name, which no other caller gets and only its owner
    /// may use, and returns its path. When none can be made, the path of nothing is returned all
    /// the same, or the empty text: where it matters, check IsDirectory(), or use a
    /// TemporaryDirectory. The caller deletes it.
    static std::string GetTemporaryDirectory();

    // --- Text files in any encoding ---

    /// Names how the text of a file is stored. The numbers are fixed; NOTSET means "to be
    /// detected".
    enum FileEncoding : std::int32_t {
        NOTSET = 0,
        ANSI = 1,  ///< bytes in the system's code page
        UTF8 = 2,  ///< with the mark EF BB BF
        UTF8NOBOM = 3,
        UTF16LE = 4,       ///< with the mark FF FE
        UTF16LENOBOM = 5,  ///< detected without a mark; written with it
        UTF16BE = 6        ///< with the mark FE FF
    };

    /// Returns the enumerator's name, "*** out of range ***" for any other value; a static
    /// text.
    static const char* FileEncodingToString(FileEncoding encoding);
    /// Returns whether the bytes begin with a byte-order mark, and then sets UTF8, UTF16LE or
    /// UTF16BE; else `encoding` stays.
    static bool CheckBufferForBom(const char* buffer, std::size_t length, FileEncoding& encoding);
    /// Reads the stream from its start and returns whether it holds a multi-byte UTF-8
    /// sequence; then sets UTF8NOBOM and leaves the stream behind the first one. Overlong forms
    /// count.
    static bool CheckForUTF8Sequences(std::istream& stream, FileEncoding& encoding);
    /// Sets UTF16LENOBOM when the system's statistical test (IsTextUnicode on Windows) takes
    /// the stream's first `sampleSize` bytes for UTF-16; else `encoding` stays.
    static void CheckForUTF16WithoutBom(std::istream& stream, FileEncoding& encoding,
                                        std::uint64_t sampleSize);
    /// Detects the encoding of a stream at its start: a mark, else a UTF-8 sequence, else
    /// UTF-16 by the system's test, else ANSI; pure ASCII is ANSI. `size` is that of the
    /// content in bytes; below 2 no mark is looked for. Never returns NOTSET.
    static FileEncoding GetFileEncoding(std::istream& stream, std::uint64_t size);
    /// Detects the encoding of a file in the same way; NOTSET when it cannot be opened. The
    /// path is not changed.
    static FileEncoding GetFileEncoding(std::string& path);

    /// Returns the content as UTF-8 without a mark; ANSI content as its bytes. `detected` is
    /// always the detected encoding; `forced`, unless NOTSET, decides how to read instead.
    /// UTF-16 takes the byte order of its mark, and without one is big-endian, except as
    /// UTF16LENOBOM; decoding ends before the first invalid code unit. A file that cannot be
    /// opened gives the empty text and leaves `detected`. A value of `forced` that is no
    /// enumerator gives the empty text (87, ERROR_INVALID_PARAMETER) and an Error entry.
    static std::string ReadFile(const std::string& path, FileEncoding& detected, FileEncoding forced);
    /// Sets `text` to what ReadFile() returns of a file of at most `mostBytes` bytes, which is as
    /// much as is read of one that tells a smaller size or none. Returns false, with an empty
    /// text and the reason in the system's last error, for a larger file (8,
    /// ERROR_NOT_ENOUGH_MEMORY), one that cannot be read, and a wrong `forced` (87,
    /// ERROR_INVALID_PARAMETER); `detected` then stays, but for a wrong `forced`.
    [[nodiscard]] static bool ReadFileLimited(const std::string& path, std::uint64_t mostBytes,
                                              std::string& text, FileEncoding& detected,
                                              FileEncoding forced = NOTSET);
    /// Returns what ReadFile() gives for a file of this content, with the encoding that is
    /// detected; touches no file.
    static std::string DecodeContent(std::string content, FileEncoding& detected);
    /// Returns ReadFile() with the encoding of the name forced.
    static std::string ReadANSIFile(const std::string& path, FileEncoding& detected);
    static std::string ReadUtf8File(const std::string& path, FileEncoding& detected);
    static std::string ReadUtf16LeFile(const std::string& path, FileEncoding& detected);
    static std::string ReadUtf16BeFile(const std::string& path, FileEncoding& detected);
    /// Writes a file anew in `encoding`, with the mark that belongs to it. `text` is UTF-8 (for
    /// ANSI: bytes as they stand); a mark at its start is dropped. Returns whether every byte
    /// was written and the file closed without error. Invalid UTF-8 for UTF-16 throws
    /// std::range_error; NOTSET or no enumerator gives false (87) and an Error entry; both leave the
    /// file alone. The file is not replaced at once: a failure midway leaves a part.
    [[nodiscard]] static bool WriteFile(const std::string& path, const std::string& text,
                                        FileEncoding encoding);
    /// Replaces a file's bytes at once, or makes the file: whenever the process or the system ends, it has
    /// the old content or the new one. Its owner and access stay; a link of that name is replaced, not
    /// followed. On failure it keeps the old content, and the last error says why: 5 (ERROR_ACCESS_DENIED)
    /// for a read-only file or a directory, 112 (ERROR_DISK_FULL). Only a directory that could not be
    /// brought to the disk gives false when the new content is there already.
    [[nodiscard]] static bool WriteFileAtomic(const std::string& path, std::string_view content);
    /// Writes as WriteFile() does, in the encoding of the name.
    static bool WriteUtf8File(const std::string& path, const std::string& text);
    static bool WriteUtf8NoBomFile(const std::string& path, const std::string& text);
    static bool WriteUtf16LeFile(const std::string& path, const std::string& text);
    static bool WriteUtf16BeFile(const std::string& path, const std::string& text);
    /// Appends without a mark, making a missing file, in `requested`, else in `current`, else
    /// in the detected encoding; `current` then tells which. Returns false for a file that
    /// cannot be opened or detected. Invalid UTF-8 for UTF-16 throws std::range_error and
    /// leaves the file; a value that is no enumerator makes the file and gives an Error entry
    /// and false (87).
    [[nodiscard]] static bool AppendToFile(const std::string& path, const std::string& text,
                                           FileEncoding& current, FileEncoding requested);

private:
    static bool HasBom(std::string_view text);
    static void StripBom(std::string& text);
    static std::string_view StripBom(std::string_view text);
    static std::string EncodeUtf16(std::string_view text, FileEncoding encoding);
    /// Swaps the bytes of every 16-bit unit in place; an odd last byte stays.
    static void FlipEndianness(std::string& units);
};

}  // namespace quillon
