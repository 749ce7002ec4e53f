#include "quillon/DateTimeUtils.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include "Utils/internal/DateTimeParts.h"
#include "base/CivilTime.h"
#include "platform/TimeApi.h"
#include "platform/ole/OleTypes.h"

namespace quillon {

using base::FloorDivide;
using base::FloorRemainder;
using base::kSecondsPerDay;
using base::kTicksPerSecond;

namespace {

constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
constexpr std::int64_t kMillisecondsFrom1601To1970 = kSecondsFrom1601To1970 * 1000;
constexpr std::int64_t kTicksPerDay = 864'000'000'000;
constexpr std::int64_t kTicksPerMillisecond = 10'000;

constexpr std::int64_t kFirstTmYear = std::int64_t{std::numeric_limits<int>::min()} + 1900;
constexpr std::int64_t kLastTmYear = std::int64_t{std::numeric_limits<int>::max()} + 1900;
constexpr std::int64_t kFirstTmSecond = base::DaysFromCivil(kFirstTmYear, 1, 1) * kSecondsPerDay;
constexpr std::int64_t kLastTmSecond = base::DaysFromCivil(kLastTmYear + 1, 1, 1) * kSecondsPerDay - 1;

}  // namespace

std::optional<TimePoint> ToTimePoint(std::int64_t epochSeconds) {
    constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / kTicksPerSecond;
    if (epochSeconds < -limit || epochSeconds > limit) return std::nullopt;
    return TimePoint(TimePoint::duration(epochSeconds * kTicksPerSecond));
}

std::uint64_t FileTimeTicks(const FILETIME& fileTime) {
    return (std::uint64_t{fileTime.dwHighDateTime} << 32) | fileTime.dwLowDateTime;
}

std::int64_t UtcFieldsToEpoch(const UtcFields& fields) {
    const std::int64_t year = fields.year + FloorDivide(fields.month - 1, 12);
    const auto month = static_cast<int>(FloorRemainder(fields.month - 1, 12)) + 1;
    return base::DaysFromCivil(year, month, fields.day) * kSecondsPerDay + fields.hour * 3600 +
           fields.minute * 60 + fields.second;
}

UtcFields EpochToUtcFields(std::int64_t epochSeconds) {
    const base::CivilDate date = base::CivilFromDays(FloorDivide(epochSeconds, kSecondsPerDay));
    const auto secondOfDay = static_cast<int>(FloorRemainder(epochSeconds, kSecondsPerDay));
    return {date.year, date.month, date.day, secondOfDay / 3600, secondOfDay / 60 % 60, secondOfDay % 60};
}

const char* const DateTimeUtils::JsonDateTimeEpoch = "1970-01-01T00:00:00.000Z";

long long DateTimeUtils::GetUtcTimeNow() {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

long long DateTimeUtils::UtcTmToEpochTime(std::tm& utc) {
    const std::int64_t seconds =
        UtcFieldsToEpoch({std::int64_t{utc.tm_year} + 1900, std::int64_t{utc.tm_mon} + 1, utc.tm_mday,
                          utc.tm_hour, utc.tm_min, utc.tm_sec});
    EpochTimeToUtcTm(utc, seconds);
    return seconds;
}

long long DateTimeUtils::UtcTmToEpochTime(std::tm* utc) { return UtcTmToEpochTime(*utc); }

void DateTimeUtils::EpochTimeToUtcTm(std::tm& utc, long long epochSeconds) {
    const std::int64_t seconds = std::clamp<std::int64_t>(epochSeconds, kFirstTmSecond, kLastTmSecond);
    const std::int64_t days = FloorDivide(seconds, kSecondsPerDay);
    const UtcFields fields = EpochToUtcFields(seconds);
    utc = std::tm{};
    utc.tm_year = static_cast<int>(fields.year - 1900);
    utc.tm_mon = static_cast<int>(fields.month - 1);
    utc.tm_mday = static_cast<int>(fields.day);
    utc.tm_hour = static_cast<int>(fields.hour);
    utc.tm_min = static_cast<int>(fields.minute);
    utc.tm_sec = static_cast<int>(fields.second);
    utc.tm_wday = static_cast<int>(FloorRemainder(days + 4, 7));  // 1970 began on a Thursday
    utc.tm_yday = static_cast<int>(days - base::DaysFromCivil(fields.year, 1, 1));
}

long long DateTimeUtils::FileTimeToEpochTime(const FILETIME& fileTime) {
    return static_cast<std::int64_t>(FileTimeTicks(fileTime) / kTicksPerSecond) - kSecondsFrom1601To1970;
}

TimePoint DateTimeUtils::FileTimeToTimePoint(const FILETIME& fileTime) {
    constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max() / kTicksPerMillisecond;
    const auto milliseconds = static_cast<std::int64_t>(FileTimeTicks(fileTime) / kTicksPerMillisecond) -
                              kMillisecondsFrom1601To1970;
    return TimePoint(TimePoint::duration(std::min(milliseconds, last) * kTicksPerMillisecond));
}

TimePoint DateTimeUtils::YMDHMSToTimePoint(int year, int month, int day, int hour, int minute, int second) {
    std::tm local{};
    // The two fields that are shifted must not leave their range by it.
    local.tm_year = std::max(year, std::numeric_limits<int>::min() + 1900) - 1900;
    local.tm_mon = std::max(month, std::numeric_limits<int>::min() + 1) - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    const auto seconds = platform::EpochOfLocalFields(local);
    return seconds ? ToTimePoint(*seconds).value_or(TimePoint()) : TimePoint();
}

long long DateTimeUtils::RoundDownToMidnight(long long epochSeconds) {
    const std::int64_t sinceMidnight = FloorRemainder(epochSeconds, kSecondsPerDay);
    constexpr std::int64_t first = std::numeric_limits<std::int64_t>::min();
    return epochSeconds < first + sinceMidnight ? first : epochSeconds - sinceMidnight;
}

TimePoint DateTimeUtils::RoundDownToMidnight(TimePoint time) {
    return TimePoint(TimePoint::duration(time.time_since_epoch().count() / kTicksPerDay * kTicksPerDay));
}

}  // namespace quillon
