#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillon::base {

/// Reads a date with an optional time as tools print it: "2026-11-25", "2026-11-25 18:03",
/// "2026-11-25T18:03:57.123456", each with an optional "Z", "+01:00" or "+0100" after the time; without a
/// zone it is UTC. Returns 100 ns since 1970-01-01 UTC; nothing for other texts and for what no calendar has.
std::optional<std::int64_t> ReadDateTime(std::string_view text);

/// Reads a date-time as RFC 3339, section 5.6, has it and nothing else: 'T' and 'Z' in either case, a
/// fraction of any length, and a zone of at most 14 hours either way. The result is as above.
std::optional<std::int64_t> ReadRfc3339(std::string_view text);

}  // namespace quillon::base
