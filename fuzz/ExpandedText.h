#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace quillon {

/// The input as text in which a byte from 0x0E on, past white space, stands for one
/// of `parts`, so that few mutations make what a pattern looks for.
inline std::string ExpandedText(const std::uint8_t* data, std::size_t size,
                                std::span<const char* const> parts) {
    constexpr std::size_t kFirst = 0x0E;
    std::string text;
    for (const std::uint8_t byte : std::span(data, size)) {
        if (byte >= kFirst && byte - kFirst < parts.size()) {
            text += parts[byte - kFirst];
        } else {
            text += static_cast<char>(byte);
        }
    }
    return text;
}

}  // namespace quillon
