#include "base/DateTimeText.h"

#include <gtest/gtest.h>

#include <utility>

#include "base/CivilTime.h"

namespace quillon::base {

TEST(DateTimeText, ReadsWhatToolsPrint) {
    constexpr std::int64_t kSecond = 10'000'000;
    const std::pair<const char*, std::optional<std::int64_t>> cases[] = {
        {"1970-01-01", 0},
        {"1970-01-01 00:01", 60 * kSecond},
        {"1970-01-01T00:00:01Z", kSecond},
        {"1970-01-01 00:00:01.5", 15'000'000},
        {"1970-01-01 00:00:00.123456789 +0000", 1'234'567},
        {"1970-01-01T01:00:00+01:00", 0},
        {"1969-12-31 23:00:00 -0100", 0},
        {"2024-02-29 00:00:00", 17'091'648'000'000'000},
        {"0000-01-01", -621'672'192'000'000'000},
        {"2023-02-29", std::nullopt},
        {"1970-13-01", std::nullopt},
        {"1970-01-01 24:00", std::nullopt},
        {"1970-01-01 00:00:01.", std::nullopt},
        {"1970-01-01 00:00 CET", std::nullopt},
        {"1970-1-1", std::nullopt},
        {"Nov 25 18:03", std::nullopt},
        {"", std::nullopt}};
    for (const auto& [text, ticks] : cases) EXPECT_EQ(ReadDateTime(text), ticks) << text;
}

TEST(CivilTime, TheShortFormAgreesInEveryMonthOfItsYears) {
    for (int year = 0; year <= 9999; ++year) {
        for (int month = 1; month <= 12; ++month)
            ASSERT_EQ(DaysOfFourDigitYear(year, month, 99), DaysFromCivil(year, month, 99)) << year << month;
    }
}

}  // namespace quillon::base
