#pragma once

#include <string>

namespace quillon::agent {

/// Returns a text for one line of a terminal, which it cannot steer: control characters are written as
/// escapes, such as \x1B, and what is not UTF-8, where a byte can be a control character of its own, as
/// LogText::RepairUtf8() does.
std::string TerminalText(const std::string& text);

/// Does the same with a foreign text for a message, and shortens it when it would fill the terminal.
std::string ShownText(const std::string& text);

}  // namespace quillon::agent
