#pragma once

#include <windows.h>

#include <new>
#include <string>

#include "system/PrivateFile.h"

namespace quillon::agent {

/// Says to people what GetLastError() tells.
inline std::string LastErrorText() { return SystemErrorText(static_cast<int>(::GetLastError())); }

/// Returns what the code says to people; nothing when there is no memory for it.
inline std::string ReasonOf(DWORD code) noexcept {
    try {
        return SystemErrorText(static_cast<int>(code));
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace quillon::agent
