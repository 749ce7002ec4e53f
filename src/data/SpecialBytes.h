#pragma once

#include <bit>
#include <cstddef>

#include "base/Sse2.h"

namespace quillon::base {

/// Searches for bytes that end a run of plain text, sixteen at a time where the processor can. `plain`
/// tells of one byte whether it is plain; `marks` gives of sixteen bytes one bit for each that is not.

#ifdef QUILLON_SSE2
inline __m128i AllOf(char byte) { return _mm_set1_epi8(byte); }

template <class Plain, class Marks>
const char* FindNotPlain(const char* position, const char* end, Plain plain, Marks marks) {
    for (; end - position >= 16; position += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(marks(bytes)));
        if (found != 0) return position + std::countr_zero(found);
    }
    while (position != end && plain(*position)) ++position;
    return position;
}
#endif

/// Whether JSON has the byte in a text only behind a backslash.
inline bool NeedsJsonEscape(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\';
}

/// Returns the first byte at or after `position` that NeedsJsonEscape(), and with `AlsoHigh` the first
/// that is not ASCII either; `end` when there is none.
template <bool AlsoHigh>
const char* FindJsonSpecial(const char* position, const char* end) {
    const auto plain = [](char byte) {
        return !NeedsJsonEscape(byte) && !(AlsoHigh && static_cast<unsigned char>(byte) >= 0x80);
    };
#ifdef QUILLON_SSE2
    const __m128i quote = AllOf('"'), backslash = AllOf('\\'), control = AllOf(0x1F);
    return FindNotPlain(position, end, plain, [&](__m128i bytes) {
        const __m128i quotes = _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash));
        const __m128i found = _mm_or_si128(quotes, _mm_cmpeq_epi8(_mm_min_epu8(bytes, control), bytes));
        return AlsoHigh ? _mm_or_si128(found, bytes) : found;  // movemask takes the top bits
    });
#else
    while (position != end && plain(*position)) ++position;
    return position;
#endif
}

/// Returns the first byte at or after `position` that is the separator, a quote, CR or LF; `end` when
/// there is none.
inline const char* FindCsvSpecial(const char* position, const char* end, char separator) {
    const auto plain = [separator](char byte) {
        return byte != separator && byte != '"' && byte != '\r' && byte != '\n';
    };
#ifdef QUILLON_SSE2
    const __m128i first = AllOf(separator), quote = AllOf('"'), cr = AllOf('\r'), lf = AllOf('\n');
    return FindNotPlain(position, end, plain, [&](__m128i bytes) {
        return _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, first), _mm_cmpeq_epi8(bytes, quote)),
                            _mm_or_si128(_mm_cmpeq_epi8(bytes, cr), _mm_cmpeq_epi8(bytes, lf)));
    });
#else
    while (position != end && plain(*position)) ++position;
    return position;
#endif
}

}  // namespace quillon::base
