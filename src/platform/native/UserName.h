#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace quillon::platform {

/// By the system's account database; nothing when it knows no such user.
std::optional<std::string> UserName(uid_t user);

}  // namespace quillon::platform
