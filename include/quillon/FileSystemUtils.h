#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

/// The file system: tests, listings, changes, security, and text files in any
/// encoding. Narrow paths are UTF-8. Operations report failure by their result
/// (false, 0 or an empty text) and, unless they say so, log nothing. Any thread.
class QUILLON_API FileSystemUtils {
public:
    FileSystemUtils() = delete;

    // --- Tests and sizes ---

    static bool Exists(const char* path);
    static bool Exists(const std::string& path);
    /// A path whose attributes cannot be read is logged at Debug.
    static bool Exists(const wchar_t* path);
    static bool Exists(const std::wstring& path);
    /// Also tells what it is and, unless null, when it was changed (whole seconds
    /// since 1970, UTC). On failure both stay as they were.
    static bool Exists(const char* path, bool& isDirectory, long long* modificationTime);
    static bool Exists(const std::string& path, bool& isDirectory, long long* modificationTime);
    /// `path` is in the system's ANSI code page.
    static bool IsDirectory(const char* path);
    static bool IsDirectory(const wchar_t* path);
    static bool IsDirectory(const std::string& path);
    static bool IsDirectory(const std::wstring& path);
    /// 0 for a file that is missing, a directory, or open for writing elsewhere.
    static std::uint64_t GetFileSizeInBytes(const std::string& path);
    static std::uint64_t GetDirectorySizeInBytes(const std::string& directory, bool recursive);
    /// Always false.
    static bool IsOperatingSystemProcess(const std::string& path);

    // --- Listings: results are appended ---

    /// Files, not directories, that match a wildcard pattern, as paths. The vector
    /// may be null. Returns their number.
    static std::uint32_t FindFiles(const char* pattern, std::vector<std::string>* files);
    static std::uint32_t FindFiles(const std::string& pattern, std::vector<std::string>* files);
    static std::uint32_t FindFiles(const wchar_t* pattern, std::vector<std::wstring>* files);
    static std::uint32_t FindFiles(const std::wstring& pattern, std::vector<std::wstring>* files);
    static std::uint32_t FindFilesExpandingEnvVars(const std::string& pattern,
                                                   std::vector<std::string>* files);
    static std::uint32_t FindFilesExpandingEnvVars(const std::wstring& pattern,
                                                   std::vector<std::wstring>* files);
    /// Paths of all files below the directory: a directory's files, then its
    /// subdirectories'.
    static bool GetAllFilesWithin(const std::string& directory, std::vector<std::string>& files);
    /// Names, not paths.
    static bool GetImmediateFilesWithin(const std::string& directory, std::vector<std::string>& names);
    static bool GetImmediateDirectoriesWithin(const std::string& directory, std::vector<std::string>& names);
    /// Roots of the fixed disks, as "C:".
    static bool GetFixedDisks(std::vector<std::wstring>& disks);

    // --- Plain reading: text mode, no detection of encodings ---

    static std::string ReadContentsOfFile(const std::string& path);
    /// Lines without their line feeds; a text that ends with one gives a last, empty
    /// line. Reading ends with a line of more than 32,767 characters, cut there.
    static void ReadContentsOfFile(const std::string& path, std::vector<std::string>& lines);
    static std::string ReadSingleLineFromFile(const char* path);
    static std::string ReadSingleLineFromFile(const std::string& path);

    // --- Version resources ---

    /// Texts of a file's version resource, each empty when unknown. UTF-8.
    struct VersionInformation {
        std::string fileVersion;     ///< the fixed version, "1.2.3.4"
        std::string productVersion;  ///< the same of the product
        std::string fileDescription;
        std::string productName;
        std::string originalFilename;

        bool operator==(const VersionInformation&) const = default;
    };

    /// `language` is four hexadecimal digits such as "0409", or empty for the first
    /// language that has a text. Answers are kept for the process's life, by path and
    /// language as they are given, while the file's modification time stays. A failure gives empty
    /// texts, one log entry, and is not kept.
    static VersionInformation GetVersionInformation(const std::string& filePath, const std::string& language);
    /// Forgets all of them.
    static void ClearVersionInformationCache();

    // --- Places ---

    /// With its trailing backslash; found once per process.
    static const std::string& GetSystemTempPath();
    static std::string GetWorkingDirectory();
    static bool SetWorkingDirectory(const std::string& path);
    /// "\Device\X" becomes "\\?\X", in place; any other text stays.
    static void DeviceNameToVolumeNameFormat(std::wstring& path);
    /// "\Device\HarddiskVolume3\a" becomes "C:\a"; no match gives the input.
    static std::string TranslateNtPathToWin32Path(const std::string& ntPath);

    // --- Changes ---

    /// Deletes one file. A failure is logged at Error unless `quiet` and leaves the
    /// system's last error for the caller.
    static bool EraseFile(const char* path, bool quiet);
    static bool EraseFile(const std::string& path, bool quiet);
    /// Deletes a tree. Links and junctions are removed, never followed; read-only
    /// files stop it. The first failure ends it, logged as by EraseFile.
    static bool EraseDirectory(const std::string& directory);
    /// Makes the missing ancestors of a path, not the path itself.
    static bool MakeDirectories(const std::string& path);
    /// Makes the path and its ancestors; false when it exists already.
    static bool MakeDirectory(const std::string& path);
    /// Sets errno to the system's code on failure.
    static bool RenameFile(const std::string& from, const std::string& to, bool overwrite);
    /// Shifts path to path.1, path.1 to path.2 and so on; path.N goes.
    static bool RenameGenerations(const std::string& path, std::uint32_t generations);
    static bool DuplicateFile(const std::string& from, const std::string& to);
    /// True when both the file and its security were copied. Throws
    /// std::filesystem::filesystem_error when the file cannot be copied.
    static bool FileCopy(const std::string& source, const std::string& destination);
    /// Copies owner, group and both access lists; needs the privileges to do so,
    /// which are left disabled.
    static bool CopyFileAcl(const std::string& source, const std::string& destination);
    /// Leaves the file to the current user alone.
    static bool SecureFile(const std::string& path);
    static bool SetProcessPrivilege(const wchar_t* name, bool enable);
    /// A new, empty file "vntXXXX.tmp" in the temporary folder, made exclusively and
    /// readable by its owner only; empty on failure.
    static std::string GetTemporaryFile();
    static std::string GetTemporaryDirectory();

    // --- Text files in any encoding ---

    enum FileEncoding : std::int32_t {
        NOTSET = 0,
        ANSI = 1,  ///< bytes in the system's code page
        UTF8 = 2,  ///< with the mark EF BB BF
        UTF8NOBOM = 3,
        UTF16LE = 4,       ///< with the mark FF FE
        UTF16LENOBOM = 5,  ///< detected without a mark; written with it
        UTF16BE = 6        ///< with the mark FE FF
    };

    /// The enumerator's name, "*** out of range ***" for any other value.
    static const char* FileEncodingToString(FileEncoding encoding);
    /// True, and the encoding set, when the bytes begin with a mark.
    static bool CheckBufferForBom(const char* buffer, std::size_t length, FileEncoding& encoding);
    /// True, and UTF8NOBOM, when the stream holds one well-formed multi-byte sequence.
    static bool CheckForUTF8Sequences(std::istream& stream, FileEncoding& encoding);
    /// Sets UTF16LENOBOM when the system's statistical test takes the text for UTF-16.
    static void CheckForUTF16WithoutBom(std::istream& stream, FileEncoding& encoding,
                                        std::uint64_t sampleSize);
    /// Mark, else UTF-8 sequence, else UTF-16 by the system's test, else ANSI.
    static FileEncoding GetFileEncoding(std::istream& stream, std::uint64_t size);
    /// NOTSET when the file cannot be opened.
    static FileEncoding GetFileEncoding(std::string& path);

    /// The content as UTF-8 without a mark (ANSI: the bytes as they are). `detected`
    /// is always the detected encoding; `forced`, unless NOTSET, decides how to
    /// read. A file that cannot be opened gives the empty text.
    static std::string ReadFile(const std::string& path, FileEncoding& detected, FileEncoding forced);
    /// What ReadFile gives for a file of this content, with the encoding that is detected.
    static std::string DecodeContent(std::string content, FileEncoding& detected);
    static std::string ReadANSIFile(const std::string& path, FileEncoding& detected);
    static std::string ReadUtf8File(const std::string& path, FileEncoding& detected);
    static std::string ReadUtf16LeFile(const std::string& path, FileEncoding& detected);
    static std::string ReadUtf16BeFile(const std::string& path, FileEncoding& detected);
    /// `text` is UTF-8 (for ANSI: as it stands); a mark at its start is dropped.
    /// Invalid UTF-8 for a UTF-16 file throws std::range_error and leaves the file.
    static bool WriteFile(const std::string& path, const std::string& text, FileEncoding encoding);
    static bool WriteUtf8File(const std::string& path, const std::string& text);
    static bool WriteUtf8NoBomFile(const std::string& path, const std::string& text);
    static bool WriteUtf16LeFile(const std::string& path, const std::string& text);
    static bool WriteUtf16BeFile(const std::string& path, const std::string& text);
    /// Appends without a mark in `requested`, else `current`, else the detected
    /// encoding, which `current` then tells.
    static bool AppendToFile(const std::string& path, const std::string& text, FileEncoding& current,
                             FileEncoding requested);

private:
    static bool HasBom(std::string_view text);
    static void StripBom(std::string& text);
    static std::string_view StripBom(std::string_view text);
    static std::string EncodeUtf16(std::string_view text, FileEncoding encoding);
    /// Swaps the bytes of every 16-bit unit.
    static void FlipEndianness(std::string& units);
};

}  // namespace quillon
