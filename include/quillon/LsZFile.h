#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

class ICLogger;

/// The list of a content package: every file with its length, time and checksum, and
/// comments with the package's version and whether the list is complete. UTF-16
/// little-endian with its mark, or UTF-8 with a warning. Read once, by the constructor,
/// in one pass; what goes wrong is logged and ParsedOk() is false, and what was read
/// before stays. Nothing throws. Names are the list's own and not to be trusted as paths.
///
/// A line ends after its line feed or after 1,139 units (bytes of UTF-8), the line feed
/// among them; an empty line ends the list. Numbers are read as the C library reads
/// them, and past the range of their field are its end; of a version the low 16 bits count.
class QUILLON_API LsZFile {
public:
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

    /// `displayName`, which may be null, names the list in the entry that it is not complete.
    LsZFile(const std::string& path, const std::string* displayName);
    ~LsZFile();
    LsZFile(const LsZFile&) = delete;
    LsZFile& operator=(const LsZFile&) = delete;

    /// The list was marked complete, and nothing in it says that it is wrong.
    bool ParsedOk() const;
    /// In the list's order.
    std::vector<FileFromLsZ>& GetFiles() const;
    std::string GetOverallHash();
    std::uint16_t GetVersion() const;
    std::string GetVersionStr();
    std::uint32_t GetBlockSize() const;
    /// Bytes of the list itself, as it is on the disk now.
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
