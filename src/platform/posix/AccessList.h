#pragma once

#include <sys/types.h>

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
/// Gives an open file `mode` and the access list of another one. The group's bits count for the group of that
/// file only, and where there is a list, whose mask they are, only together with it: otherwise the group has
/// no rights, and nobody takes the file's account or group on by running it.
bool CopyAccess(int source, int target, mode_t mode, bool isGroupKept);
/// The name of an open file, by which it is reached whatever has its path now.
std::string NameOfDescriptor(int descriptor);

}  // namespace quillon::platform
