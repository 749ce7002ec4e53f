#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillon::simulation {

/// Returns the instant of a CIM date-time "yyyymmddHHMMSS.mmmmmm+UUU", whose offset is the minutes east of
/// UTC, in microseconds since 1970 UTC; nothing for any other text, a time span and a time with open digits
/// included.
std::optional<std::int64_t> InstantOf(std::wstring_view text);

}  // namespace quillon::simulation
