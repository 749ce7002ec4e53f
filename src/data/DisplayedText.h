#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon {

/// Counts the code points of valid UTF-8.
std::size_t CountCharacters(std::string_view utf8);

/// Returns the text as valid UTF-8 that cannot steer what shows it: control characters and those that
/// turn the direction of writing become escapes as in JSON. A backslash that would read as such an
/// escape is doubled.
std::string Displayed(std::string_view text);

/// Appends the first `width` characters of a longer text; the last of them are the ellipsis, which is
/// cut too when it is longer than that.
void AppendCut(std::string& output, std::string_view text, std::size_t width, std::string_view ellipsis);

/// Cuts the text from `start` on to `width` characters in the same way when it is longer.
void CutLine(std::string& output, std::size_t start, std::size_t width, std::string_view ellipsis);

}  // namespace quillon
