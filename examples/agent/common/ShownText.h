#pragma once

#include <string>

namespace quillon::agent {

/// A foreign text (UTF-8) for a message: it can neither steer a terminal nor fill it.
std::string ShownText(const std::string& text);

}  // namespace quillon::agent
