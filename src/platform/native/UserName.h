#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace quillon::platform {

/// Returns the name in the system's account database; nothing when there is no such user.
std::optional<std::string> UserName(uid_t user);

}  // namespace quillon::platform
