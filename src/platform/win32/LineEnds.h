#pragma once

#include <string>
#include <string_view>

namespace quillon::platform {

/// Returns the text with CR LF in place of each LF that has no CR.
inline std::string WithCrLf(std::string_view text) {
    std::string result;
    result.reserve(text.size() + 2);
    char previous = '\0';
    for (const char c : text) {
        if (c == '\n' && previous != '\r') result.push_back('\r');
        result.push_back(c);
        previous = c;
    }
    return result;
}

}  // namespace quillon::platform
