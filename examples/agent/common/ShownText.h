#pragma once

#include <string>

namespace quillon::agent {

/// A foreign text (UTF-8) for a message: it can neither steer a terminal nor fill it. Control characters are
/// written as escapes, such as \x1B.
std::string ShownText(const std::string& text);

}  // namespace quillon::agent
