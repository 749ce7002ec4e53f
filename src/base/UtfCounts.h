#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace quillon::base {

/// How much memory a text needs in the other form of Unicode.

inline std::uint64_t LoadWord(const void* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

/// Returns exactly the units that valid UTF-8 becomes; of invalid text never fewer than its
/// valid beginning becomes: one unit for every byte that is no continuation, and a
/// second one for leads of four bytes.
inline std::size_t CountUnits(std::string_view text) {
    constexpr std::size_t block = 16;  // a fixed count, which compilers turn into vectors
    const auto unitsOf = [](char c) {
        const auto byte = static_cast<signed char>(c);  // continuations are less than -64
        return static_cast<unsigned char>((byte >= -64) + ((byte >= -16) & (byte < 0)));
    };
    std::size_t units = 0, i = 0;
    for (; text.size() - i >= block; i += block) {
        unsigned char sum = 0;
        for (std::size_t j = 0; j < block; ++j) sum = static_cast<unsigned char>(sum + unitsOf(text[i + j]));
        units += sum;
    }
    for (; i < text.size(); ++i) units += unitsOf(text[i]);
    return units;
}

/// How many bytes a unit becomes; either half of a pair counts two.
template <class Unit>
constexpr Unit BytesOf(Unit unit) {
    const auto value = static_cast<std::make_unsigned_t<Unit>>(unit);
    const auto surrogate = static_cast<Unit>((value & 0xF800) == 0xD800);
    return static_cast<Unit>(1 + (value >= 0x80) + (value >= 0x800) - surrogate);
}

/// Exactly the bytes that valid UTF-16 becomes; of invalid text never fewer than
/// its valid beginning becomes.
template <class Unit>
std::size_t CountBytes(std::basic_string_view<Unit> text) {
    constexpr std::size_t block = 16;  // a fixed count, which compilers turn into vectors
    std::size_t bytes = 0, i = 0;
    for (; text.size() - i >= block; i += block) {
        Unit sum = 0;
        for (std::size_t j = 0; j < block; ++j) sum = static_cast<Unit>(sum + BytesOf(text[i + j]));
        bytes += static_cast<std::size_t>(sum);
    }
    for (; i < text.size(); ++i) bytes += static_cast<std::size_t>(BytesOf(text[i]));
    return bytes;
}

}  // namespace quillon::base
