#pragma once

#include <string_view>

namespace quillon {

/// Names and texts come from modules; a null one must not end the process.
inline std::string_view TextOrEmpty(const char* text) { return text != nullptr ? text : std::string_view(); }

}  // namespace quillon
