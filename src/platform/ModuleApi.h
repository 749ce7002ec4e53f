#pragma once

#include <optional>
#include <string>

#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// Full path of the process's executable, a library path in UTF-8.
std::optional<std::string> ExecutablePath();
/// The module that holds an address, not counted as a use of it; null when there is
/// none, see LastError(). Outside Windows it is the module's base address.
HINSTANCE ModuleOfAddress(void* address);

}  // namespace quillon::platform
