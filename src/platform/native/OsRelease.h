#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon::platform {

/// What /etc/os-release says of the distribution, such as its NAME; nothing when it does not.
std::optional<std::string> OsReleaseValue(std::string_view name);

}  // namespace quillon::platform
