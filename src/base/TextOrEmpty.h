#pragma once

#include <string_view>

namespace quillon::base {

/// A null text comes from a module by mistake, and must not end the process.
inline std::string_view TextOrEmpty(const char* text) { return text != nullptr ? text : std::string_view(); }

}  // namespace quillon::base
