#pragma once

#include <windows.h>

#include <string>

#include "system/SystemErrorText.h"

namespace quillon::agent {

/// Returns the text of GetLastError().
inline std::string LastErrorText() { return SystemErrorText(static_cast<int>(::GetLastError())); }

}  // namespace quillon::agent
