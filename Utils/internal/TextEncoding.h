#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quillon/FileSystemUtils.h"

namespace quillon {

/// FileSystemUtils::GetFileEncoding of a file's content in memory. `size` is what
/// the system reports, which need not be the content's own.
FileSystemUtils::FileEncoding DetectEncoding(std::string_view content, std::uint64_t size);

/// Returns the size that the detection goes by: 0 for a file that another process writes. Nothing, with the
/// last error set, when it cannot be told for another reason.
std::optional<std::uint64_t> SizeForDetection(const std::string& path);

/// Looks for a multi-byte UTF-8 sequence in a content that comes in pieces.
class Utf8Finder {
public:
    void Add(std::string_view piece);
    bool HasFound() const { return m_hasFound; }

private:
    std::size_t m_expected = 0;  ///< continuation bytes that the last lead byte still takes with it
    bool m_fits = false;         ///< those that came are such
    bool m_hasFound = false;
};

/// DetectEncoding() for a content in which UTF-8 was looked for while it was read.
FileSystemUtils::FileEncoding DetectEncoding(std::string_view content, std::uint64_t size,
                                             const Utf8Finder& utf8);

/// Returns whether a file can have that encoding: false for NOTSET and for a value outside the
/// enumeration.
bool IsFileEncoding(FileSystemUtils::FileEncoding encoding);

/// The Error entry of the operation that `number` stands for.
void LogUnsupportedEncoding(FileSystemUtils::FileEncoding encoding, int number);

}  // namespace quillon
