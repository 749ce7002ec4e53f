#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace quillon::base {

/// Whether a byte goes on with a character that another byte has begun.
constexpr bool IsUtf8Continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// Returns the first `most` bytes of `text`, and fewer where a character would be cut. Where that many
/// continuation bytes are together that they belong to no character, the text is cut at `most`.
constexpr std::string_view CutUtf8(std::string_view text, std::size_t most) {
    constexpr std::size_t kMostContinuations = 3;
    if (text.size() <= most) return text;
    const std::size_t least = most - std::min(most, kMostContinuations);
    std::size_t end = most;
    while (end > least && IsUtf8Continuation(text[end])) --end;
    return text.substr(0, IsUtf8Continuation(text[end]) ? most : end);
}

}  // namespace quillon::base
