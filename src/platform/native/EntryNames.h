#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillon::platform {

/// Returns the names in a directory but "." and "..", in the system's order; nothing when it cannot be read,
/// see errno. Throws std::bad_alloc, where an iterator of the standard library that is given an error code
/// ends the process.
std::optional<std::vector<std::string>> EntryNames(const std::string& folder);

}  // namespace quillon::platform
