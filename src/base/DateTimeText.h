#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillon::base {

struct PlainDateTime {
    int year, month, day, hour, minute, second;
};

/// Reads the first 19 characters of a text as "2016-05-10T12:13:14", whose fields may be any digits. Returns
/// false, and leaves `fields` undefined, when one is of another kind.
inline bool ReadPlainDateTime(const char* text, PlainDateTime& fields) {
    unsigned wrong = 0;  // 1 once a character is no digit
    const auto two = [text, &wrong](int at) {
        const unsigned tens = static_cast<unsigned char>(text[at]) - unsigned{'0'};
        const unsigned ones = static_cast<unsigned char>(text[at + 1]) - unsigned{'0'};
        wrong |= static_cast<unsigned>(tens > 9) | static_cast<unsigned>(ones > 9);
        return static_cast<int>(tens * 10 + ones);
    };
    fields = {two(0) * 100 + two(2), two(5), two(8), two(11), two(14), two(17)};
    return wrong == 0 && text[4] == '-' && text[7] == '-' && text[10] == 'T' && text[13] == ':' &&
           text[16] == ':';
}

/// Reads a date with an optional time as tools print it: "2026-11-25", "2026-11-25 18:03",
/// "2026-11-25T18:03:57.123456", each with an optional "Z", "+01:00" or "+0100" after the time; without a
/// zone it is UTC. Returns 100 ns since 1970-01-01 UTC; nothing for other texts and for what no calendar has.
std::optional<std::int64_t> ReadDateTime(std::string_view text);

/// Reads a date-time as RFC 3339, section 5.6, has it and nothing else: 'T' and 'Z' in either case, a
/// fraction of any length, and a zone of at most 14 hours either way. The result is as above.
std::optional<std::int64_t> ReadRfc3339(std::string_view text);

}  // namespace quillon::base
