#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

class ICLogger;

/// Reads the list of a content package: every file with its length, time and checksum, and comments
/// with the package's version and whether the list is complete. The list is UTF-16 little-endian with
/// a byte-order mark; UTF-8 is read as well, with a Warn entry. It is read once, by the constructor, in
/// one pass; a failure is logged on the registered logger and makes ParsedOk() false, and what was read
/// before stays. Nothing throws. Names come from the list: never trust them as paths. One object is
/// used by one thread at a time.
///
/// A line ends after its line feed or after 1,139 code units, the line feed included; an empty line
/// ends the list. Numbers are read as the C library reads them; one past the range of its field becomes
/// the end of that range, and of a version the low 16 bits count.
///
/// @code
/// const LsZFile list("C:\\content\\package.lsz", nullptr);
/// if (list.ParsedOk()) {
///     for (const auto& file : list.GetFiles()) std::cout << file.name << ' ' << file.length << '\n';
/// }
/// @endcode
class QUILLON_API LsZFile {
public:
    /// Holds one entry of the list. Members without a value in the list are 0 or empty.
    struct FileFromLsZ {
        std::uint32_t leadingValue = 0;  ///< before the name; 1 when it begins with ".\"
        std::string name;                ///< UTF-8, without ".\"; empty for a folder
        bool isFolder = false;
        std::int64_t length = 0;  ///< bytes
        std::int64_t time = 0;    ///< a file time; 0 when unknown
        std::int64_t from = 0;
        std::int64_t to = 0;
        std::string crc;
        std::int32_t rdc = 0;
    };

    /// Reads the list; `path` is UTF-8. `displayName`, which may be null, names the list in the entry
    /// "LSZ file '%s' is not complete". A file that cannot be opened gives the Error entry "Cannot open
    /// LSZ file '%s' because: %s". When ParsedOk() will be false, the last error is the reason of the system,
    /// or 13 (ERROR_INVALID_DATA) for a list that is not complete or is wrong.
    LsZFile(const std::string& path, const std::string* displayName);
    ~LsZFile();
    LsZFile(const LsZFile&) = delete;
    LsZFile& operator=(const LsZFile&) = delete;

    /// Returns whether the list was marked complete and nothing in it says that it is wrong.
    bool ParsedOk() const;
    /// Returns the entries in the list's order; the reference is valid as long as the object, and the
    /// caller may change what is in it.
    std::vector<FileFromLsZ>& GetFiles() const;
    /// Return what the comments say; empty or 0 without such a comment.
    std::string GetOverallHash();
    std::uint16_t GetVersion() const;
    std::string GetVersionStr();
    std::uint32_t GetBlockSize() const;
    /// Returns the size of the list's file in bytes as it is on the disk now, as
    /// FileSystemUtils::GetFileSizeInBytes() does.
    std::uint64_t GetFileSize() const;

private:
    struct Record;
    class Parser;

    ICLogger* m_logger;
    bool m_isUnicode = false;
    std::uint32_t m_blockSize = 0;
    std::uint16_t m_version = 0;
    bool m_parsedOk = false;
    std::unique_ptr<Record> m_record;
};

}  // namespace quillon
