#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quillon::platform {

/// The POSIX access list of a file, as the system stores it. A failure is false or nothing, with errno.

/// Empty for a file without one, as most are, and on the many file systems that have none. ERANGE when it
/// takes more than `limit` bytes. A link is followed.
std::optional<std::string> ReadAccessList(const std::string& native, std::size_t limit);
/// Replaces the list, also the one that a directory gives to its new files; an empty one removes it.
bool WriteAccessList(const std::string& native, const std::string& list);
/// The name of an open file, by which it is reached whatever has its path now.
std::string NameOfDescriptor(int descriptor);

}  // namespace quillon::platform
