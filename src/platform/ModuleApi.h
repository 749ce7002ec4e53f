#pragma once

#include <optional>
#include <string>

namespace quillon::platform {

/// Full path of the process's executable, a library path in UTF-8.
std::optional<std::string> ExecutablePath();

}  // namespace quillon::platform
