#pragma once

#include <string_view>

namespace quillon::base {

/// Returns the text, or the empty one for null, which a module may pass by mistake.
inline std::string_view TextOrEmpty(const char* text) { return text != nullptr ? text : std::string_view(); }

}  // namespace quillon::base
