#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Handle.h"

namespace quillon::platform {

/// The operations that the log file needs beyond FileApi.h. Paths are library paths in UTF-8; the reason
/// of a failure is in LastError().

/// Opens a log file for appending; one that is missing is made, for its owner to
/// write and its group to read. Others may read and write it meanwhile. No child
/// inherits it. Pipes and sockets are refused.
FileHandle OpenLogFile(const std::string& path);
/// Returns false for a device, which must not be moved aside.
bool IsDiskFile(const FileHandle& file);

struct Appended {
    std::uint64_t bytes = 0;  ///< in the file, line ends as the system writes them
    bool isComplete = false;
};
/// Appends a text whose lines end in LF, in one piece as far as the system lets it.
Appended AppendToLogFile(const FileHandle& file, std::string_view text);

/// The system's own name of the file that swallows what is written.
const char* NullDevice();

}  // namespace quillon::platform
