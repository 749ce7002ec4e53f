#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quillon::platform {

/// The permissions of files. Paths are library paths in UTF-8. A failure returns false or nothing, with
/// the reason in LastError().

/// Switches a privilege of the process, such as "SeSecurityPrivilege"; base::kNoSuchPrivilege
/// when there is none of that name, base::kNotAllAssigned when the process was not given it. Outside
/// Windows a state of the process stands in for the token's: root was given all.
bool SetPrivilege(const std::wstring& name, bool enable);

/// Owner, group, access list and audit list of a file, in the system's own form
/// (outside Windows: owner, group, mode and POSIX access list). Fails with
/// base::kInsufficientBuffer when it takes more than `limit` bytes.
std::optional<std::string> ReadSecurity(const std::string& path, std::size_t limit);
bool WriteSecurity(const std::string& path, const std::string& security);

/// Leaves the file to the user that the process runs as, with every right.
bool RestrictToCurrentUser(const std::string& path);

}  // namespace quillon::platform
