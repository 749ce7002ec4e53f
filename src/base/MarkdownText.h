#pragma once

#include <string>
#include <string_view>

namespace quillon::base {

/// Escapes a text for Markdown (CommonMark with GitHub's tables) so that a reader sees it as it is, on one
/// line; a line end becomes a break, and an address of the web a link.
std::string MarkdownText(std::string_view text);

}  // namespace quillon::base
