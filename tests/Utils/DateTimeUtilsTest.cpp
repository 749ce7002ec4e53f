#include "quillon/DateTimeUtils.h"

#include <gmock/gmock.h>

#include <climits>
#include <limits>
#include <random>
#include <tuple>

#include "quillon/StringUtils.h"
#include "support/RecordingLogger.h"
#include "support/Split.h"
#include "support/TempDir.h"

namespace quillon {
namespace {

using DT = DateTimeUtils;
using std::string_literals::operator""s;

constexpr long long kNoon = 1462881600;  // 2016-05-10T12:00:00Z

TimePoint AtTicks(std::int64_t ticks) { return TimePoint(TimePoint::duration(ticks)); }

/// The members as they stand in the structure, not as they are printed.
std::tm RawFields(int year, int month, int day, int hour, int minute, int second) {
    std::tm fields{};
    std::tie(fields.tm_year, fields.tm_mon, fields.tm_mday) = std::tuple(year, month, day);
    std::tie(fields.tm_hour, fields.tm_min, fields.tm_sec) = std::tuple(hour, minute, second);
    return fields;
}

TEST(DateTimeUtilsIso, TimePointsAreRoundedDownToMilliseconds) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {12'349'999, "1970-01-01T00:00:01.234Z"},
        {9'517'824'000'000'000, "2000-02-29T00:00:00.000Z"},
        {2'534'023'007'999'999'999, "9999-12-31T23:59:59.999Z"},
        {2'534'023'008'000'000'000, "10000-01-01T00:00:00.000"},
        {INT64_MAX, "31197-09-14T02:48:05.477"},
        {-1, "1969-12-31T23:59:59.999Z"},
        {-10'000'000, "1969-12-31T23:59:59.000Z"},
        {-22'038'912'000'000'001, "1900-02-28T23:59:59.999Z"},
        {INT64_MIN + 1, "-27258-04-19T21:11:54.52"},
        {INT64_MIN, ""},
    };
    for (const auto& [ticks, text] : cases) EXPECT_EQ(DT::FormatTimeAsISO8601(AtTicks(ticks)), text) << ticks;
}

TEST(DateTimeUtilsIso, FieldsArePrintedAsTheyStandAndCutAt24Characters) {
    const std::tuple<std::tm, unsigned int, const char*> cases[] = {
        {RawFields(116, 4, 10, 12, 13, 14), 7, "2016-05-10T12:13:14.007Z"},
        {RawFields(-1893, 12, 0, 24, 60, 61), 1234, "0007-13-00T24:60:61.1234"},
        {RawFields(-1905, 0, -1, -10, 0, 0), 0, "-005-01--1T-10:00:00.000"},
        {RawFields(116, 99, 10, 12, 13, 14), 0, "2016-100-10T12:13:14.000"},
        {RawFields(INT_MAX, INT_MAX, INT_MIN, 0, 0, 0), UINT_MAX, "2147485547-2147483648--2"},
    };
    for (const auto& [fields, milliseconds, expected] : cases)
        EXPECT_EQ(DT::FormatTimeAsISO8601(fields, milliseconds), expected) << expected;

    EXPECT_EQ(DT::FormatTimeAsISO8601(kNoon), "2016-05-10T12:00:00.000Z");
    EXPECT_EQ(DT::FormatTimeAsISO8601(LLONG_MAX), "292277026596-12-04T15:30");
    EXPECT_EQ(DT::FormatTimeAsISO8601(LLONG_MIN), "-292277022657-01-27T08:2");
}

TEST(DateTimeUtilsUtcTm, FieldsAreNormalisedInPlace) {
    const std::tuple<std::tm, long long, const char*, int, int> cases[] = {
        {RawFields(116, 4, 10, 12, 0, 0), kNoon, "2016-05-10T12:00:00.000Z", 2, 130},
        {RawFields(116, 16, 0, -12, 0, 0), 1493467200, "2017-04-29T12:00:00.000Z", 6, 118},
        {RawFields(70, -1, 32, 0, 0, -1), -1, "1969-12-31T23:59:59.000Z", 3, 364},
        {RawFields(0, 1, 29, 0, 0, 0), -2203891200, "1900-03-01T00:00:00.000Z", 4, 59},
        {RawFields(INT_MAX, 11, 31, 23, 59, 59), 67768036191676799, "2147485547-12-31T23:59:5", 3, 364},
        // One second on, the year no longer fits: the fields stay at the last that does.
        {RawFields(INT_MAX, 11, 31, 23, 59, 60), 67768036191676800, "2147485547-12-31T23:59:5", 3, 364},
        {RawFields(INT_MIN, 0, 1, 0, 0, -1), -67768040609740801, "-2147481748-01-01T00:00:", 4, 0},
    };
    for (const auto& [given, seconds, normalised, weekday, dayOfYear] : cases) {
        SCOPED_TRACE(normalised);
        std::tm fields = given;
        EXPECT_EQ(DT::UtcTmToEpochTime(&fields), seconds);
        EXPECT_EQ(DT::FormatTimeAsISO8601(fields, 0), normalised);
        EXPECT_EQ(fields.tm_wday, weekday);
        EXPECT_EQ(fields.tm_yday, dayOfYear);
    }
}

TEST(DateTimeUtilsRounding, GivesTheMidnightOfTheDay) {
    EXPECT_EQ(DT::RoundDownToMidnight(kNoon - 43200), kNoon - 43200);
    EXPECT_EQ(DT::RoundDownToMidnight(-1LL), -86400);
    EXPECT_EQ(DT::RoundDownToMidnight(LLONG_MIN), LLONG_MIN);
    EXPECT_EQ(DT::RoundDownToMidnight(AtTicks(14'628'860'550'000'000)), AtTicks(14'628'384'000'000'000));
    EXPECT_EQ(DT::RoundDownToMidnight(AtTicks(-1)), AtTicks(0));  // toward zero
}

TEST(DateTimeUtilsSpan, PartsFromTheFirstThatIsNotZero) {
    const std::pair<long long, const char*> cases[] = {
        {-5, "0s"}, {59, "59s"}, {60, "1m 0s"}, {3600, "1h 0m 0s"}, {90061, "1d 1h 1m 1s"},
    };
    for (const auto& [seconds, text] : cases) EXPECT_EQ(DT::FormatTimeSpanAsString(seconds), text) << seconds;
}

TEST(DateTimeUtilsX509, ReadsBothFormsAndRefusesTheRest) {
    const std::tuple<const char*, bool, long long> cases[] = {
        {"491231235959Z", true, 2524607999},
        {"500101000000Z", true, -631152000},
        {"160510120000Z", true, kNoon},
        {"20160510120000Z", true, kNoon},
        {"20160510120000+0500", true, kNoon},
        {"20160510120000", true, kNoon},
        {"2016051012000Z", false, 0},
        {"20161710120000Z", true, kNoon + 365 * 86400},  // fields count on
        {"1605101200x0Z", false, 0},
        {"1605101200 0Z", false, 0},
        {"160510120 00Z", true, kNoon},
        {"", false, 0},
        {nullptr, false, 0},
    };
    for (const auto& [text, isTime, expected] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        long long seconds = 77;
        EXPECT_EQ(DT::ParseX509TimeString(text, &seconds), isTime);
        EXPECT_EQ(seconds, expected);
    }
}

TEST(DateTimeUtilsJson, ReadsFieldsFractionAndZone) {
    const std::tuple<std::string, long long, std::int64_t> cases[] = {
        {"1970-01-01T00:00:00.500Z", 1, 5'000'000},
        {"1970-01-01T00:00:00.5Z", 0, 50'000},
        {"1970-01-01T00:00:00.x99Z", 0, 0},
        {"1970-01-01T00:00:00", 0, 0},
        {"1969-12-31T23:59:59.250z", -1, -7'500'000},
        {"2016-05-10T12:00:00.000+01:00", kNoon - 3600, 14'628'780'000'000'000},
        {"2016-05-10T12:00:00.000-05:30", kNoon + 19800, 14'629'014'000'000'000},
        {"2016-05-10T12:00:00.000+01", kNoon, 14'628'816'000'000'000},
        {"2016-05-10T12:00:00+01:00Z", kNoon, 14'628'816'000'000'000},
        {"2016- 5-\t10T 12: 0:+0 rest", kNoon, 14'628'816'000'000'000},
        {"1970-01-01T00:00:0", 0, 0},                // 18 characters
        {"1970-01-01 00:00:01Z", 0, 0},              // no T
        {"1970-01-01T00:01:x1Z", 0, 0},              // five fields
        {"1970-01 -01T00:00:01Z", 0, 0},             // a literal skips no blank
        {"1970-01-01T00:00:\0 1"s, 0, 0},            // a zero ends a number
        {"31197-09-14T02:48:06Z", 922337203686, 0},  // too large for a time point only
        {"-2147483648-01-01T00:00:00Z", -67768100567971200, 0},
        {"1970-01-01T00:00:99999999999999999999Z", 2147483647, 21'474'836'470'000'000},  // an int's limit
    };
    for (const auto& [text, seconds, ticks] : cases) {
        EXPECT_EQ(DT::JsonDateTimeToEpochTime(text), seconds) << text;
        EXPECT_EQ(DT::JsonDateTimeToTimePoint(text), AtTicks(ticks)) << text;
    }
}

// A time of the usual form takes a short way. Its fraction with zeros before it is the same number in another
// form, which takes the long way.
TEST(DateTimeUtilsJson, TheShortWayAgreesWithTheLongOne) {
    std::mt19937 random(18);
    const std::string changes = "0123456789:-+.TZz \0"s;
    for (int i = 0; i < 200'000; ++i) {
        std::string text = random() % 2 == 0 ? "2016-05-10T12:13:14.123Z" : "1999-12-31T23:59:59.600-08:30";
        for (auto left = random() % 4; left > 0; --left)
            text[random() % text.size()] = changes[random() % changes.size()];
        if (text[19] != '.' || text.find('.') != 19) continue;
        const std::string longer = text.substr(0, 20) + '0' + text.substr(20);
        ASSERT_EQ(DT::JsonDateTimeToEpochTime(text), DT::JsonDateTimeToEpochTime(longer)) << text;
        ASSERT_EQ(DT::JsonDateTimeToTimePoint(text), DT::JsonDateTimeToTimePoint(longer)) << text;
    }
}

TEST(DateTimeUtilsParse, ReadsJsonDateTimesStrictly) {
    const std::pair<const char*, std::int64_t> good[] = {
        {"2016-05-10T12:00:00Z", kNoon * 10'000'000},
        {"2016-05-10t12:00:00.5z", kNoon * 10'000'000 + 5'000'000},
        {"2016-05-10T13:00:00.123456789+01:00", kNoon * 10'000'000 + 1'234'567},
        {"2016-05-09T22:00:00-14:00", kNoon * 10'000'000},
        {"2016-05-10T11:59:60+00:00", kNoon * 10'000'000},
        {"2016-02-29T00:00:00Z", 14'567'040'000'000'000},
    };
    for (const auto& [text, ticks] : good) EXPECT_EQ(DT::TryParseJsonDateTime(text), AtTicks(ticks)) << text;
    for (const std::string& text : test::Split("2016-05-10 2016-05-10T12:00:00 2016-05-10T12:00:00.Z "
                                               "2016-05-10T12:00Z 2016-5-10T12:00:00Z "
                                               "2016-13-10T12:00:00Z 2016-00-10T12:00:00Z "
                                               "2015-02-29T12:00:00Z 2016-04-31T12:00:00Z "
                                               "2016-05-00T12:00:00Z 2016-05-10T24:00:00Z "
                                               "2016-05-10T12:60:00Z 2016-05-10T12:00:61Z "
                                               "2016-05-10T12:00:00+14:01 2016-05-10T12:00:00+01:60 "
                                               "2016-05-10T12:00:00+1:00 2016-05-10T12:00:00+0100 "
                                               "12016-05-10T12:00:00Z -016-05-10T12:00:00Z"))
        EXPECT_EQ(DT::TryParseJsonDateTime(text), std::nullopt) << text;
    for (const char* const text :
         {"", "2016-05-10 12:00:00Z", "2016-05-10T12:00:00Z ", " 2016-05-10T12:00:00Z"})
        EXPECT_EQ(DT::TryParseJsonDateTime(text), std::nullopt) << text;
    EXPECT_TRUE(DT::TryParseJsonDateTime("0000-01-01T00:00:00Z"));
    EXPECT_TRUE(DT::TryParseJsonDateTime("9999-12-31T23:59:59Z"));
}

// The tests run with TZ=UTC; other zones are with the seam's tests.
TEST(DateTimeUtilsLocal, WallClockTimesAndTexts) {
    EXPECT_EQ(DT::YMDHMSToTimePoint(2015, 17, 10, 11, 59, 60), AtTicks(kNoon * 10'000'000));
    EXPECT_EQ(DT::YMDHMSToTimePoint(INT_MIN, INT_MIN, 1, 0, 0, 0), AtTicks(0));
    EXPECT_EQ(DT::YMDHMSToTimePoint(INT_MAX, 1, 1, 0, 0, 0), AtTicks(0));
    EXPECT_EQ(DT::FormatTimeTAsAscTime(kNoon + 3), "Tue May 10 12 : 00:03 2016");
    EXPECT_EQ(DT::FormatTimeTAsAscTime(253402300800), "");  // 27 characters
    EXPECT_EQ(DT::FormatTimeTAsAscTime(LLONG_MAX), "");
}

TEST(DateTimeUtilsOle, DatesBecomeTimePointsAndTexts) {
    // The date's own fields, and the date taken as UTC.
    const std::tuple<const char*, double, std::int64_t, const char*, const char*> cases[] = {
        {"rounds to seconds", 42500.999999, 14'629'248'000'000'000, "2016-05-11T00:00:00.000+00:00",
         "2016-05-11T00:00:00.000+00:00"},
        {"fraction of a negative date counts forward", -366.25, -22'407'624'000'000'000,
         "1898-12-29T06:00:00.000+00:00", "1898-12-29T06:00:00.000+00:00"},
        {"zero point of OLE dates", 0, -22'091'616'000'000'000, "", ""},
        {"zero point of file times", -109205, -116'444'736'000'000'000, "", ""},
        {"before file times", -109206, 0, "1600-12-31T00:00:00.000+00:00", ""},
        {"first", -657434, 0, "0100-01-01T00:00:00.000+00:00", ""},
        {"before the first", -657435, 0, "", ""},
        {"last second", 2958465.99999, 2'534'023'007'990'000'000, "9999-12-31T23:59:59.000+00:00",
         "9999-12-31T23:59:59.000+00:00"},
        {"after the last", 2958466, 0, "", ""},
        {"no number", std::numeric_limits<double>::quiet_NaN(), 0, "", ""},
        {"endless", -std::numeric_limits<double>::infinity(), 0, "", ""},
    };
    for (const auto& [what, ole, ticks, text, localText] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(DT::DATEToTimePoint(ole), AtTicks(ticks));
        EXPECT_EQ(DT::ColeDateTimeToJsonDateTime(ATL::COleDateTime(ole)), text);
        EXPECT_EQ(DT::DATEToJsonDateTime(ole), localText);
    }
    ATL::COleDateTime date(42500.5);
    for (const auto status : {ATL::COleDateTime::invalid, ATL::COleDateTime::null}) {
        SCOPED_TRACE(status);
        date.SetStatus(status);
        EXPECT_EQ(DT::ColeDateTimeToJsonDateTime(date), "");
    }
}

TEST(DateTimeUtilsZones, AFileOverridesTheMap) {
    test::RecordingLogger log;
    const test::TempDir dir;
    const auto file = [&dir](const std::string& entries) {
        return dir.Write("zones.xml", "<supplementalData><windowsZones><mapTimezones>" + entries +
                                          "</mapTimezones></windowsZones></supplementalData>");
    };
    EXPECT_TRUE(DT::OverrideTimezones(file("<mapZone other='New' territory='001' type='A/B'/>")));
    EXPECT_EQ(DT::MapWindowsTimezoneToIana("New") + DT::MapIanaTimezoneToWindows("A/B"), "A/BNew");
    EXPECT_FALSE(DT::OverrideTimezones(file("")));
    EXPECT_FALSE(DT::OverrideTimezones(dir.Path("none")));
    EXPECT_THAT(StringUtils::GetLastErrorAsString(), testing::StartsWith("(2/"));
    EXPECT_EQ(DT::MapWindowsTimezoneToIana("New"), "A/B");
    EXPECT_EQ(log.Lines(ICLogger::Level::Error).size(), 2u);
    EXPECT_TRUE(DT::OverrideTimezones(file("<mapZone other='X' territory='001' type='X'/>")));
}

TEST(DateTimeUtilsZones, EmbeddedMapIsExactAndUnknownNamesWarnEachTime) {
    test::RecordingLogger log;
    EXPECT_EQ(DT::MapWindowsTimezoneToIana("Eastern Standard Time"), "America/New_York");
    EXPECT_EQ(DT::MapWindowsTimezoneToIana("Russian Standard Time"), "Europe/Moscow");
    EXPECT_EQ(DT::MapWindowsTimezoneToIana("Central European Standard Time", "PL"), "Europe/Warsaw");
    EXPECT_EQ(DT::MapIanaTimezoneToWindows("Europe/Sarajevo"), "Central European Standard Time");
    EXPECT_EQ(DT::MapIanaTimezoneToWindows("Asia/Kolkata"), "India Standard Time");
    EXPECT_EQ(DT::MapIanaTimezoneToWindows("UTC"), "UTC");
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    for (const char* name : {"eastern standard time", "Tomsk Standard Time"})
        EXPECT_EQ(DT::MapWindowsTimezoneToIana(name), "") << name;
    EXPECT_THAT(log.Lines(ICLogger::Level::Warn),
                testing::ElementsAre("TimeZoneMapper does not contain the string 'eastern standard time'",
                                     "TimeZoneMapper does not contain the string 'Tomsk Standard Time'"));
}

}  // namespace
}  // namespace quillon
