#pragma once

#include <string_view>

#include "base/Utf8Cut.h"

namespace quillon::base {

/// Returns the character at the front of a text in UTF-8 when it turns the direction of writing: U+061C,
/// U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069. Otherwise, also for an invalid text, 0.
constexpr unsigned DirectionMark(std::string_view text) {
    constexpr unsigned kArabicLetterMark = 0x061C, kBlock = 0x2000, kPayload = 0x3F, kBits = 6;
    if (text.starts_with("\xD8\x9C")) return kArabicLetterMark;
    const bool isInBlock = text.starts_with("\xE2\x80") || text.starts_with("\xE2\x81");
    if (!isInBlock || text.size() < 3 || !IsUtf8Continuation(text[2])) return 0;
    const auto bitsAt = [text](std::size_t place) {
        return static_cast<unsigned char>(text[place]) & kPayload;
    };
    const unsigned code = kBlock | bitsAt(1) << kBits | bitsAt(2);
    const bool marks = code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
                       (code >= 0x2066 && code <= 0x2069);
    return marks ? code : 0;
}

}  // namespace quillon::base
