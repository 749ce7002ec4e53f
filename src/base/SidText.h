#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace quillon::base {

/// Returns a binary security identifier as text (S-1-5-18), or the empty text when the bytes hold none.
inline std::string SidText(std::span<const unsigned char> bytes) {
    constexpr std::size_t kHead = 8, kPart = 4, kMostParts = 15;
    if (bytes.size() < kHead || bytes[1] > kMostParts || bytes.size() < kHead + bytes[1] * kPart) return {};
    std::uint64_t authority = 0;
    for (const unsigned char byte : bytes.subspan(2, 6)) authority = authority << 8 | byte;
    std::string text = "S-" + std::to_string(bytes[0]) + '-' + std::to_string(authority);
    for (std::size_t at = kHead; at < kHead + bytes[1] * kPart; at += kPart) {
        std::uint32_t part = 0;
        for (std::size_t n = kPart; n > 0; --n) part = part << 8 | bytes[at + n - 1];
        text += '-' + std::to_string(part);
    }
    return text;
}

}  // namespace quillon::base
