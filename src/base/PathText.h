#pragma once

#include <string_view>

#include "base/Characters.h"

namespace quillon::base {

/// Windows takes either between the elements of a path.
constexpr bool IsSeparator(char c) { return c == '\\' || c == '/'; }

/// Whether a path begins with a drive letter and a colon.
constexpr bool StartsWithDrive(std::string_view path) {
    return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':';
}

}  // namespace quillon::base
