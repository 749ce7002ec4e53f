#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "quillon/TimePoint.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Pieces that the sources of DateTimeUtils share.

/// A date and time of day; fields beyond their usual range count on. 64 bits hold
/// every int with room to add.
struct UtcFields {
    std::int64_t year;
    std::int64_t month;  // January is 1
    std::int64_t day;
    std::int64_t hour;
    std::int64_t minute;
    std::int64_t second;
};

/// Never overflows while each field is within the range of an int and a little more.
std::int64_t UtcFieldsToEpoch(const UtcFields& fields);
UtcFields EpochToUtcFields(std::int64_t epochSeconds);

/// Converts seconds since 1970; nothing when their ticks do not fit.
std::optional<TimePoint> ToTimePoint(std::int64_t epochSeconds);

std::uint64_t FileTimeTicks(const FILETIME& fileTime);

/// Writes as "%0*d" does (a sign counts) and returns the end. A value takes up to
/// the larger of `width` and 20 characters.
char* WritePadded(char* out, std::int64_t value, int width);

/// "%04d-%02d-%02dT%02d:%02d:%02d", which fits this buffer whatever the fields are.
inline constexpr std::size_t kDateTimeSize = 6 * 20 + 5;
char* WriteDateTime(char* out, const UtcFields& fields);

/// "+01:00"; a zero offset is "+00:00".
std::string ZoneDesignator(int offsetMinutes);

}  // namespace quillon
