#pragma once

#include <windows.h>

#include <string>

#include "system/PrivateFile.h"

namespace quillon::agent {

/// Says to people what GetLastError() tells.
inline std::string LastErrorText() { return SystemErrorText(static_cast<int>(::GetLastError())); }

}  // namespace quillon::agent
