#pragma once

#include <new>
#include <string>

namespace quillon::agent {

/// Returns the system's text of its error code: errno, or a Windows error code.
std::string SystemErrorText(int code);

/// Returns the same for an entry of the log; nothing when there is no memory for it.
inline std::string ReasonOf(int code) noexcept {
    try {
        return SystemErrorText(code);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace quillon::agent
