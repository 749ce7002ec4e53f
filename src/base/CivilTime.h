#pragma once

#include <cstdint>

namespace quillon::base {

/// The proleptic Gregorian calendar as arithmetic, for every year that a time of
/// the library can have and far beyond. Days count from 1970-01-01.

inline constexpr std::int64_t kSecondsPerDay = 86'400;
inline constexpr std::int64_t kTicksPerSecond = 10'000'000;

struct CivilDate {
    std::int64_t year;
    int month;  // 1-12
    int day;    // 1-31
};

/// Quotient rounded down; `divisor` is positive.
constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

/// Returns the remainder of FloorDivide(), which is never negative and never overflows.
constexpr std::int64_t FloorRemainder(std::int64_t value, std::int64_t divisor) {
    const std::int64_t remainder = value % divisor;
    return remainder < 0 ? remainder + divisor : remainder;
}

// Years begin in March here, so that the leap day is a year's last; 400 of them
// (146,097 days) are an era; 0000-03-01 is 719,468 days before 1970-01-01.

/// `month` must be 1-12; `day` may be any, it only counts on from the month's first.
constexpr std::int64_t DaysFromCivil(std::int64_t year, int month, std::int64_t day) {
    const std::int64_t marchYear = year - (month <= 2 ? 1 : 0);
    const std::int64_t era = FloorDivide(marchYear, 400);
    const std::int64_t yearOfEra = marchYear - era * 400;
    const std::int64_t firstOfMonth = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + firstOfMonth + day - 1;
    return era * 146'097 + dayOfEra - 719'468;
}

/// Returns the same as DaysFromCivil() for a year from 0 to 9999, by divisions of 32 bits without a sign.
constexpr std::int64_t DaysOfFourDigitYear(int year, int month, int day) {
    // One era more, so that January of the year 0 is no exception.
    const auto marchYear = static_cast<std::uint32_t>(year + 400 - (month <= 2 ? 1 : 0));
    const auto firstOfMonth = static_cast<std::uint32_t>(153 * (month > 2 ? month - 3 : month + 9) + 2) / 5;
    const std::uint32_t days =
        marchYear * 365 + marchYear / 4 - marchYear / 100 + marchYear / 400 + firstOfMonth;
    return std::int64_t{days} + day - 1 - 719'468 - 146'097;
}

constexpr CivilDate CivilFromDays(std::int64_t days) {
    const std::int64_t shifted = days + 719'468;
    const std::int64_t era = FloorDivide(shifted, 146'097);
    const auto dayOfEra = static_cast<std::uint32_t>(shifted - era * 146'097);
    const std::uint32_t yearOfEra =
        (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const std::uint32_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::uint32_t marchMonth = (5 * dayOfYear + 2) / 153;
    const auto day = static_cast<int>(dayOfYear - (153 * marchMonth + 2) / 5 + 1);
    const auto month = static_cast<int>(marchMonth < 10 ? marchMonth + 3 : marchMonth - 9);
    return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month, day};
}

}  // namespace quillon::base
