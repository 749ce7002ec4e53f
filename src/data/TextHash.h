#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quillon {

/// Spreads the bits of a number. Where the library was loaded adds what the author of a hostile table
/// cannot know.
inline std::uint64_t Mixed(std::uint64_t bits) noexcept {
    static const char seed = 0;
    bits = (bits ^ reinterpret_cast<std::uintptr_t>(&seed)) * 0xD6E8FEB86659FD93U;
    bits = (bits ^ bits >> 32) * 0x9E3779B97F4A7C15U;
    return bits ^ bits >> 32;
}

/// Hashes a text word by word.
inline std::uint64_t TextHash(std::string_view text) noexcept {
    std::uint64_t hash = text.size(), word = 0;
    while (text.size() >= sizeof(word)) {
        std::memcpy(&word, text.data(), sizeof(word));
        hash = Mixed(hash ^ word);
        text.remove_prefix(sizeof(word));
    }
    if (text.empty()) return hash;
    word = 0;
    std::memcpy(&word, text.data(), text.size());
    return Mixed(hash ^ word);
}

}  // namespace quillon
