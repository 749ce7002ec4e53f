#pragma once

#include <string>
#include <vector>

#include "quillon/StringUtils.h"

namespace quillon::test {

/// Returns the pieces of a text, for lists of many short texts.
inline std::vector<std::string> Split(const std::string& text, char separator = ' ') {
    std::vector<std::string> pieces;
    StringUtils::SplitByChar(text, separator, pieces);
    return pieces;
}

}  // namespace quillon::test
