#pragma once

#include "base/ByteBlocks.h"

namespace quillon {

/// Whether JSON has the byte in a text only behind a backslash.
inline bool NeedsJsonEscape(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\';
}

/// Which bytes end a search beside those that it is for.
enum class AlsoFind { Nothing, HighBytes };

/// Returns the first byte at or after `position` that NeedsJsonEscape(), and with HighBytes the first that
/// is not ASCII either; `end` when there is none.
template <AlsoFind also>
const char* FindJsonSpecial(const char* position, const char* end) {
    const auto plain = [](char byte) {
        return !NeedsJsonEscape(byte) &&
               !(also == AlsoFind::HighBytes && static_cast<unsigned char>(byte) >= 0x80);
    };
#ifdef QUILLON_SSE2
    const __m128i quote = _mm_set1_epi8('"'), backslash = _mm_set1_epi8('\\'), control = _mm_set1_epi8(0x1F);
    return base::FindNotPlain(position, end, plain, [&](__m128i bytes) {
        const __m128i quotes = _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash));
        const __m128i found = _mm_or_si128(quotes, _mm_cmpeq_epi8(_mm_min_epu8(bytes, control), bytes));
        return also == AlsoFind::HighBytes ? _mm_or_si128(found, bytes) : found;
    });
#else
    return base::FindNotPlain(position, end, plain);
#endif
}

/// Returns the first byte at or after `position` that is the separator, a quote, CR or LF, and with
/// HighBytes the first that is not ASCII either; `end` when there is none.
template <AlsoFind also>
const char* FindCsvSpecial(const char* position, const char* end, char separator) {
    const auto plain = [separator](char byte) {
        return byte != separator && byte != '"' && byte != '\r' && byte != '\n' &&
               !(also == AlsoFind::HighBytes && static_cast<unsigned char>(byte) >= 0x80);
    };
#ifdef QUILLON_SSE2
    const __m128i first = _mm_set1_epi8(separator), quote = _mm_set1_epi8('"');
    const __m128i cr = _mm_set1_epi8('\r'), lf = _mm_set1_epi8('\n');
    return base::FindNotPlain(position, end, plain, [&](__m128i bytes) {
        const __m128i found =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, first), _mm_cmpeq_epi8(bytes, quote)),
                         _mm_or_si128(_mm_cmpeq_epi8(bytes, cr), _mm_cmpeq_epi8(bytes, lf)));
        return also == AlsoFind::HighBytes ? _mm_or_si128(found, bytes) : found;
    });
#else
    return base::FindNotPlain(position, end, plain);
#endif
}

}  // namespace quillon
