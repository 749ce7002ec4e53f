#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon::platform {

/// Returns a value of /etc/os-release, such as that of NAME; nothing when the file does not have it.
std::optional<std::string> OsReleaseValue(std::string_view name);

}  // namespace quillon::platform
