#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/Sse2.h"

namespace quillon::base {

/// Runs of the characters that take three bytes in UTF-8 and one unit in UTF-16, as those of East Asian
/// scripts: four at a time where the processor can, and none elsewhere. Both directions move `p` and `out`
/// past what they have converted and stop before the first four characters that are not all of this kind or
/// do not fit; single characters are the caller's.

#ifdef QUILLON_SSE2
namespace detail {

inline bool AreAllSet(__m128i mask) { return _mm_movemask_epi8(mask) == 0xFFFF; }

/// Returns whether the numbers, one in each 32 bits, are 0x800 to 0xFFFF and no surrogates.
inline bool AreThreeByteCharacters(__m128i characters) {
    const __m128i high = _mm_and_si128(characters, _mm_set1_epi32(0xF800));
    const __m128i isSmall = _mm_cmpeq_epi32(high, _mm_setzero_si128());
    const __m128i isSurrogate = _mm_cmpeq_epi32(high, _mm_set1_epi32(0xD800));
    return _mm_movemask_epi8(_mm_or_si128(isSmall, isSurrogate)) == 0;
}

/// Returns twelve bytes as three bytes in each 32 bits. Fourteen bytes are read.
inline __m128i SpreadThrees(const unsigned char* p) {
    const __m128i pairs = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                                             _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 6)));
    const __m128i first = _mm_and_si128(pairs, _mm_set1_epi64x(0xFFFFFF));
    const __m128i second = _mm_and_si128(_mm_slli_epi64(pairs, 8), _mm_set1_epi64x(0x00FFFFFF00000000));
    return _mm_or_si128(first, second);
}

/// Stores three bytes of each 32 bits, twelve in all. Fourteen bytes are written.
inline void StoreThrees(__m128i spread, char* out) {
    const __m128i first = _mm_and_si128(spread, _mm_set1_epi64x(0xFFFFFF));
    const __m128i second = _mm_and_si128(_mm_srli_epi64(spread, 8), _mm_set1_epi64x(0xFFFFFF000000));
    const __m128i pairs = _mm_or_si128(first, second);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), pairs);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 6), _mm_unpackhi_epi64(pairs, pairs));
}

inline __m128i CharactersOfThrees(__m128i spread) {
    const __m128i top = _mm_slli_epi32(_mm_and_si128(spread, _mm_set1_epi32(0x0F)), 12);
    const __m128i middle = _mm_srli_epi32(_mm_and_si128(spread, _mm_set1_epi32(0x3F00)), 2);
    const __m128i low = _mm_srli_epi32(_mm_and_si128(spread, _mm_set1_epi32(0x3F0000)), 16);
    return _mm_or_si128(_mm_or_si128(top, middle), low);
}

inline __m128i ThreesOfCharacters(__m128i characters) {
    const __m128i top = _mm_srli_epi32(characters, 12);
    const __m128i middle = _mm_and_si128(_mm_slli_epi32(characters, 2), _mm_set1_epi32(0x3F00));
    const __m128i low = _mm_and_si128(_mm_slli_epi32(characters, 16), _mm_set1_epi32(0x3F0000));
    return _mm_or_si128(_mm_or_si128(top, middle), _mm_or_si128(low, _mm_set1_epi32(0x8080E0)));
}

template <class Unit>
__m128i LoadCharacters(const Unit* p) {
    if constexpr (sizeof(Unit) == 4) return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
}

template <class Unit>
void StoreCharacters(__m128i characters, Unit* out) {
    if constexpr (sizeof(Unit) == 4) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), characters);
    } else {
        // Each number gets the sign of its 16 bits, which the narrowing keeps.
        const __m128i withSign = _mm_srai_epi32(_mm_slli_epi32(characters, 16), 16);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packs_epi32(withSign, withSign));
    }
}

}  // namespace detail
#endif

template <class Unit>
void DecodeThrees([[maybe_unused]] const unsigned char*& p, [[maybe_unused]] const unsigned char* end,
                  [[maybe_unused]] Unit*& out, [[maybe_unused]] const Unit* outEnd) {
#ifdef QUILLON_SSE2
    const __m128i fixed = _mm_set1_epi32(0xC0C0F0), expected = _mm_set1_epi32(0x8080E0);
    for (; end - p >= 14 && outEnd - out >= 4; p += 12, out += 4) {
        const __m128i spread = detail::SpreadThrees(p);
        const __m128i characters = detail::CharactersOfThrees(spread);
        if (!detail::AreAllSet(_mm_cmpeq_epi32(_mm_and_si128(spread, fixed), expected)) ||
            !detail::AreThreeByteCharacters(characters)) {
            return;
        }
        detail::StoreCharacters(characters, out);
    }
#endif
}

template <class Unit>
void EncodeThrees([[maybe_unused]] const Unit*& p, [[maybe_unused]] const Unit* end,
                  [[maybe_unused]] char*& out, [[maybe_unused]] const char* outEnd) {
#ifdef QUILLON_SSE2
    for (; end - p >= 4 && outEnd - out >= 14; p += 4, out += 12) {
        const __m128i characters = detail::LoadCharacters(p);
        if constexpr (sizeof(Unit) == 4) {
            const __m128i beyond = _mm_srli_epi32(characters, 16);
            if (!detail::AreAllSet(_mm_cmpeq_epi32(beyond, _mm_setzero_si128()))) return;
        }
        if (!detail::AreThreeByteCharacters(characters)) return;
        detail::StoreThrees(detail::ThreesOfCharacters(characters), out);
    }
#endif
}

}  // namespace quillon::base
