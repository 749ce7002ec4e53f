#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Handle.h"

namespace quillon::platform {

/// The bytes of open files: what FileApi.h's operations on content are made of. A
/// failure is false, nothing or an empty handle, see LastError().

/// Only what has an end; others may write the file meanwhile.
FileHandle OpenForReading(const std::string& path);
/// Bytes read, which may be fewer than fit; 0 at the end.
std::optional<std::size_t> ReadSome(const FileHandle& file, char* buffer, std::size_t size);
bool WriteAll(const FileHandle& file, std::string_view bytes);

}  // namespace quillon::platform
