#pragma once

#include <cstdint>
#include <string_view>

#include "quillon/FileSystemUtils.h"

namespace quillon {

/// FileSystemUtils::GetFileEncoding of a file's content in memory. `size` is what
/// the system reports, which need not be the content's own.
FileSystemUtils::FileEncoding DetectEncoding(std::string_view content, std::uint64_t size);

/// Returns whether a file can have that encoding: false for NOTSET and for a value outside the
/// enumeration.
bool IsFileEncoding(FileSystemUtils::FileEncoding encoding);

/// The Error entry of the operation that `number` stands for.
void LogUnsupportedEncoding(FileSystemUtils::FileEncoding encoding, int number);

}  // namespace quillon
