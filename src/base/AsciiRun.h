#pragma once

#include <bit>
#include <cstddef>
#include <type_traits>

#include "base/Sse2.h"

namespace quillon::base {

/// Runs of ASCII between bytes and wider units (2 or 4 bytes each), sixteen at a
/// time where the processor can. Both copy until the first unit that is not ASCII
/// and return how many that were; `to` has room for `count`, and what it gets behind
/// the copied ones means nothing.

#ifdef QUILLON_SSE2
template <class Unit>
void StoreWidened(__m128i bytes, Unit* to) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_unpacklo_epi8(bytes, zero);
    const __m128i high = _mm_unpackhi_epi8(bytes, zero);
    auto* const target = reinterpret_cast<__m128i*>(to);
    if constexpr (sizeof(Unit) == 2) {
        _mm_storeu_si128(target, low);
        _mm_storeu_si128(target + 1, high);
    } else {
        _mm_storeu_si128(target, _mm_unpacklo_epi16(low, zero));
        _mm_storeu_si128(target + 1, _mm_unpackhi_epi16(low, zero));
        _mm_storeu_si128(target + 2, _mm_unpacklo_epi16(high, zero));
        _mm_storeu_si128(target + 3, _mm_unpackhi_epi16(high, zero));
    }
}

/// Sets the bit of each of sixteen units, given as two vectors of 16 bits each, that is ASCII.
inline unsigned AsciiUnits(__m128i low, __m128i high) {
    const __m128i excess = _mm_set1_epi16(static_cast<short>(0xFF80)), zero = _mm_setzero_si128();
    const __m128i lowFit = _mm_cmpeq_epi16(_mm_and_si128(low, excess), zero);
    const __m128i highFit = _mm_cmpeq_epi16(_mm_and_si128(high, excess), zero);
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(lowFit, highFit)));
}

/// Stores sixteen units as bytes and sets the bit of each that is ASCII; the other bytes mean nothing.
template <class Unit>
unsigned NarrowBlock(const Unit* from, char* to) {
    const auto load = [from](int i) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from) + i); };
    __m128i low = load(0), high = load(1);
    if constexpr (sizeof(Unit) == 4) {
        // A unit past 0x7FFF becomes 0x7FFF, or a number below zero.
        low = _mm_packs_epi32(low, high);
        high = _mm_packs_epi32(load(2), load(3));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(low, high));
    return AsciiUnits(low, high);
}

/// The same for the bytes of sixteen UTF-16 units.
template <bool kBigEndian>
bool NarrowByteBlock(const char* from, char* to) {
    __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from) + 1);
    const __m128i excess = _mm_set1_epi16(static_cast<short>(kBigEndian ? 0x80FF : 0xFF80));
    const __m128i beyond =
        _mm_cmpeq_epi8(_mm_and_si128(_mm_or_si128(low, high), excess), _mm_setzero_si128());
    if (_mm_movemask_epi8(beyond) != 0xFFFF) return false;
    if constexpr (kBigEndian) {
        low = _mm_srli_epi16(low, 8);
        high = _mm_srli_epi16(high, 8);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(low, high));
    return true;
}
#endif

/// The UTF-16 unit whose bytes begin there.
template <bool kBigEndian>
char16_t UnitOfBytes(const char* p) {
    const auto first = static_cast<unsigned char>(p[0]), second = static_cast<unsigned char>(p[1]);
    return static_cast<char16_t>(kBigEndian ? first << 8 | second : second << 8 | first);
}

/// A run of ASCII in the bytes of `count` UTF-16 units.
template <bool kBigEndian>
std::size_t NarrowAsciiBytes(const char* from, std::size_t count, char* to) {
    std::size_t done = 0;
#ifdef QUILLON_SSE2
    while (count - done >= 16 && NarrowByteBlock<kBigEndian>(from + 2 * done, to + done)) done += 16;
#endif
    for (; done < count && UnitOfBytes<kBigEndian>(from + 2 * done) < 0x80; ++done) {
        to[done] = static_cast<char>(UnitOfBytes<kBigEndian>(from + 2 * done));
    }
    return done;
}

/// Returns how many bytes at the beginning are ASCII.
inline std::size_t CountAscii(const char* text, std::size_t count) {
    std::size_t done = 0;
#ifdef QUILLON_SSE2
    const auto load = [&](std::size_t at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + done + at));
    };
    for (; count - done >= 64; done += 64) {
        const __m128i all = _mm_or_si128(_mm_or_si128(load(0), load(16)), _mm_or_si128(load(32), load(48)));
        if (_mm_movemask_epi8(all) != 0) break;
    }
    for (; count - done >= 16; done += 16) {
        const auto beyond = static_cast<unsigned>(_mm_movemask_epi8(load(0)));
        if (beyond != 0) return done + static_cast<std::size_t>(std::countr_zero(beyond));
    }
#endif
    while (done < count && static_cast<unsigned char>(text[done]) < 0x80) ++done;
    return done;
}

template <class Unit>
std::size_t WidenAscii(const unsigned char* from, std::size_t count, Unit* to) {
    std::size_t done = 0;
#ifdef QUILLON_SSE2
    for (; count - done >= 16; done += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
        const auto beyond = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        StoreWidened(bytes, to + done);
        if (beyond != 0) return done + static_cast<std::size_t>(std::countr_zero(beyond));
    }
#endif
    for (; done < count && from[done] < 0x80; ++done) {
        to[done] = static_cast<Unit>(from[done]);
    }
    return done;
}

template <class Unit>
std::size_t NarrowAscii(const Unit* from, std::size_t count, char* to) {
    std::size_t done = 0;
#ifdef QUILLON_SSE2
    for (; count - done >= 16; done += 16) {
        const unsigned ascii = NarrowBlock(from + done, to + done);
        if (ascii != 0xFFFF) return done + static_cast<std::size_t>(std::countr_one(ascii));
    }
#endif
    for (; done < count && static_cast<std::make_unsigned_t<Unit>>(from[done]) < 0x80; ++done) {
        to[done] = static_cast<char>(from[done]);
    }
    return done;
}

}  // namespace quillon::base
