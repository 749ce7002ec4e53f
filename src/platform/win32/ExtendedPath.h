#pragma once

#include <optional>
#include <string>

namespace quillon::platform {

/// Returns the full form of a library path, which has no limit of 260 characters, as "\\?\C:\a"; nothing for
/// one that WidePath() refuses, or that names a device (ERROR_ACCESS_DENIED).
std::optional<std::wstring> ExtendedPath(const std::string& path);

}  // namespace quillon::platform
