#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/Characters.h"
#include "base/HexDigits.h"
#include "base/Sse2.h"

namespace quillon::base {

/// Work on bytes that goes sixteen at a time where the processor can, and one at a time elsewhere.

/// Either of two bytes, as the two cases of a letter.
struct EitherByte {
    char one, other;

    bool Is(char c) const { return (c == one) | (c == other); }
};

#ifdef QUILLON_SSE2
namespace detail {

inline __m128i LoadBlock(const char* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
inline void StoreBlock(__m128i block, char* to) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block); }

inline __m128i AreEither(__m128i block, EitherByte wanted) {
    return _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8(wanted.one)),
                        _mm_cmpeq_epi8(block, _mm_set1_epi8(wanted.other)));
}

/// Each byte is 0 to 15.
inline __m128i LowerDigits(__m128i nibbles) {
    constexpr char kLetterGap = 'a' - '0' - 10;
    const __m128i isLetter = _mm_cmpgt_epi8(nibbles, _mm_set1_epi8(9));
    return _mm_add_epi8(_mm_add_epi8(nibbles, _mm_set1_epi8('0')),
                        _mm_and_si128(isLetter, _mm_set1_epi8(kLetterGap)));
}

/// Returns whether each byte is at most `most`, all read without a sign.
inline __m128i AreAtMost(__m128i bytes, char most) {
    return _mm_cmpeq_epi8(_mm_subs_epu8(bytes, _mm_set1_epi8(most)), _mm_setzero_si128());
}

/// Reads sixteen hexadecimal digits into eight bytes; false, with nothing stored, when one of them is none.
inline bool ReadHexBlock(const char* from, char* to) {
    const __m128i text = LoadBlock(from);
    const __m128i digits = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    const __m128i letters = _mm_sub_epi8(_mm_or_si128(text, _mm_set1_epi8(0x20)), _mm_set1_epi8('a'));
    const __m128i areDigits = AreAtMost(digits, 9), areLetters = AreAtMost(letters, 5);
    if (_mm_movemask_epi8(_mm_or_si128(areDigits, areLetters)) != 0xFFFF) return false;
    const __m128i nibbles =
        _mm_or_si128(_mm_and_si128(areDigits, digits),
                     _mm_andnot_si128(areDigits, _mm_add_epi8(letters, _mm_set1_epi8(10))));
    const __m128i high = _mm_slli_epi16(_mm_and_si128(nibbles, _mm_set1_epi16(0xFF)), 4);
    const __m128i pairs = _mm_or_si128(high, _mm_srli_epi16(nibbles, 8));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(pairs, pairs));
    return true;
}

}  // namespace detail
#endif

/// Returns the first byte at or after `position` that is not plain, which `plain` tells of one byte; `end`
/// when there is none. With vectors `marks` sets the top bit of each of sixteen bytes that is not plain.
#ifdef QUILLON_SSE2
template <class Plain, class Marks>
const char* FindNotPlain(const char* position, const char* end, Plain plain, Marks marks) {
    for (; end - position >= 16; position += 16) {
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(marks(detail::LoadBlock(position))));
        if (found != 0) return position + std::countr_zero(found);
    }
    while (position != end && plain(*position)) ++position;
    return position;
}
#else
template <class Plain>
const char* FindNotPlain(const char* position, const char* end, Plain plain) {
    while (position != end && plain(*position)) ++position;
    return position;
}
#endif

/// Returns the first index of `from` to `count` at which both texts have what is wanted of them, else
/// `count`.
inline std::size_t FindBoth(const char* heads, EitherByte head, const char* tails, EitherByte tail,
                            std::size_t from, std::size_t count) {
#ifdef QUILLON_SSE2
    for (; from < count && count - from >= 16; from += 16) {
        const __m128i both = _mm_and_si128(detail::AreEither(detail::LoadBlock(heads + from), head),
                                           detail::AreEither(detail::LoadBlock(tails + from), tail));
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(both));
        if (found != 0) return from + static_cast<std::size_t>(std::countr_zero(found));
    }
#endif
    for (; from < count; ++from) {
        if (head.Is(heads[from]) && tail.Is(tails[from])) return from;
    }
    return count;
}

/// Returns whether a byte of 0xC0 or more comes before one of 0x80 to 0xBF, as at the beginning of a
/// character of UTF-8 with more than one byte.
inline bool IsLeadOfUtf8(char first, char second) {
    return (first & 0xC0) == 0xC0 && (second & 0xC0) == 0x80;
}

/// Returns the first index from `from` on that IsLeadOfUtf8() holds for, else that of the last byte, or
/// `count` when there is none.
inline std::size_t FindLeadOfUtf8(const char* text, std::size_t from, std::size_t count) {
#ifdef QUILLON_SSE2
    const __m128i lastOther = _mm_set1_epi8(static_cast<char>(0xBF)), firstLead = _mm_set1_epi8(-64);
    for (; from < count && count - from > 16; from += 16) {
        const __m128i block = detail::LoadBlock(text + from), next = detail::LoadBlock(text + from + 1);
        const __m128i both = _mm_and_si128(_mm_cmpgt_epi8(block, lastOther), _mm_cmpgt_epi8(firstLead, next));
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(both, block)));
        if (found != 0) return from + static_cast<std::size_t>(std::countr_zero(found));
    }
#endif
    while (from + 1 < count && !IsLeadOfUtf8(text[from], text[from + 1])) ++from;
    return from;
}

/// Copies bytes until the first `stop`, and returns how many that were; `to` has room for `count`.
inline std::size_t CopyUntil(const char* from, std::size_t count, char stop, char* to) {
    std::size_t done = 0;
#ifdef QUILLON_SSE2
    for (; count - done >= 16; done += 16) {
        const __m128i block = detail::LoadBlock(from + done);
        detail::StoreBlock(block, to + done);
        const auto found =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8(stop))));
        if (found != 0) return done + static_cast<std::size_t>(std::countr_zero(found));
    }
#endif
    for (; done < count && from[done] != stop; ++done) to[done] = from[done];
    return done;
}

/// Returns how many bytes the text has without the white space at its end.
inline std::size_t SizeWithoutSpacesBehind(const char* text, std::size_t size) {
#ifdef QUILLON_SSE2
    for (; size >= 16; size -= 16) {
        const __m128i block = detail::LoadBlock(text + size - 16);
        const __m128i controls = detail::AreAtMost(_mm_sub_epi8(block, _mm_set1_epi8('\t')), '\r' - '\t');
        const __m128i spaces = _mm_or_si128(controls, _mm_cmpeq_epi8(block, _mm_set1_epi8(' ')));
        const auto others = static_cast<std::uint16_t>(~_mm_movemask_epi8(spaces));
        if (others != 0) return size - static_cast<std::size_t>(std::countl_zero(others));
    }
#endif
    while (size > 0 && IsSpace(text[size - 1])) --size;
    return size;
}

/// Writes two lower-case hexadecimal digits for each byte.
inline void WriteHex(const unsigned char* bytes, std::size_t count, char* to) {
    std::size_t i = 0;
#ifdef QUILLON_SSE2
    for (; count - i >= 16; i += 16) {
        const __m128i block = detail::LoadBlock(reinterpret_cast<const char*>(bytes) + i);
        const __m128i mask = _mm_set1_epi8(0x0F);
        const __m128i high = detail::LowerDigits(_mm_and_si128(_mm_srli_epi16(block, 4), mask));
        const __m128i low = detail::LowerDigits(_mm_and_si128(block, mask));
        detail::StoreBlock(_mm_unpacklo_epi8(high, low), to + 2 * i);
        detail::StoreBlock(_mm_unpackhi_epi8(high, low), to + 2 * i + 16);
    }
#endif
    for (; i < count; ++i) {
        to[2 * i] = kLowerDigits[bytes[i] >> 4];
        to[2 * i + 1] = kLowerDigits[bytes[i] & 15];
    }
}

/// Reads pairs of hexadecimal digits into at most `count` bytes, until one is none; returns how many bytes
/// that were.
inline std::size_t ReadHex(const char* text, std::size_t count, unsigned char* bytes) {
    std::size_t done = 0;
#ifdef QUILLON_SSE2
    while (count - done >= 8 && detail::ReadHexBlock(text + 2 * done, reinterpret_cast<char*>(bytes) + done))
        done += 8;
#endif
    for (; done < count; ++done) {
        const int high = HexDigit(text[2 * done]), low = HexDigit(text[2 * done + 1]);
        if (high < 0 || low < 0) break;
        bytes[done] = static_cast<unsigned char>(high * 16 + low);
    }
    return done;
}

}  // namespace quillon::base
