#include "platform/TimeApi.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>

#include "platform/ole/OleTypes.h"
#include "quillon/DateTimeUtils.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon {
namespace {

using DT = DateTimeUtils;

constexpr std::uint64_t kNoon = 131'073'552'000'000'000;  // 2016-05-10T12:00:00Z as a file time

FILETIME At(std::uint64_t ticks) {
    return {static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
}

TimePoint AtTicks(std::int64_t ticks) { return TimePoint(TimePoint::duration(ticks)); }

std::wstring CimToJson(const std::wstring& text) {
    return DT::CimDateTimeToJsonDateTime(_variant_t(text.c_str()));
}

TEST(DateTimeUtilsFileTime, ConvertsTheWholeRange) {
    const std::tuple<std::uint64_t, long long, std::int64_t, const char*, const char*> cases[] = {
        {0, -11644473600, -116'444'736'000'000'000, "1601-01-01T00:00:00.000Z", ""},
        {116'444'736'000'000'000, 0, 0, "1970-01-01T00:00:00.000Z", "1970-01-01T00:00:00.000+00:00"},
        {116'444'735'999'999'999, -1, -10'000, "1969-12-31T23:59:59.999Z", "1969-12-31T23:59:59.000+00:00"},
        {kNoon + 12'349'999, 1462881601, 14'628'816'012'340'000, "2016-05-10T12:00:01.234Z",
         "2016-05-10T12:00:01.000+00:00"},
        // The year has no room in an OLE date, then the system has no calendar time.
        {(std::uint64_t{1} << 63) - 1, 910692730085, 9'106'927'300'854'770'000, "30828-09-14T02:48:05.477Z",
         ""},
        {std::uint64_t{1} << 63, 910692730085, 9'106'927'300'854'770'000, "", ""},
        {UINT64_MAX, 1833029933770, 9'223'372'036'854'770'000, "", ""},
    };
    for (const auto& [ticks, seconds, pointTicks, iso, json] : cases) {
        SCOPED_TRACE(ticks);
        EXPECT_EQ(DT::FileTimeToEpochTime(At(ticks)), seconds);
        EXPECT_EQ(DT::FileTimeToTimePoint(At(ticks)), AtTicks(pointTicks));
        EXPECT_EQ(DT::FormatTimeAsISO8601(At(ticks)), iso);
        EXPECT_EQ(DT::FileTimeToJsonDateTime(At(ticks)), json);
    }
}

TEST(DateTimeUtilsCim, TextsBecomeJsonDateTimes) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"20160510121314.123456+060", L"2016-05-10T12:13:14.123+01:00"},
        {L"20160510121314.123456+000", L"2016-05-10T12:13:14.123Z"},
        {L"20160510121314.123456-030", L"2016-05-10T12:13:14.123-00:30"},
        {L"20160510121314.123456+999", L"2016-05-10T12:13:14.123+16:39"},
        {L"20160510121314.123456+6*0", L"2016-05-10T12:13:14.123+00:06"},
        {L"20160510******.******+***", L"2016-05-10T00:00:00.000Z"},
        {L"2016051012*314.1*3456:000", L"2016-05-10T12:00:14.1*3Z"},
        {L"2*160510121314.123456+000", L"2*16-05-10T12:13:14.123Z"},
        {L"20160510121314.123456+00", L""},
        {L"", L""},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(CimToJson(text), expected) << text;
    EXPECT_EQ(DT::CimDateTimeToJsonDateTime(_variant_t()), L"");
    EXPECT_EQ(DT::CimDateTimeToJsonDateTime(_variant_t(42500.5, VT_DATE)), L"");

    const auto before = DT::FormatTimeAsISO8601(DT::GetUtcTimeNow()).substr(0, 10);
    const std::wstring today = CimToJson(L"********121314.000000+000");
    const auto after = DT::FormatTimeAsISO8601(DT::GetUtcTimeNow()).substr(0, 10);
    EXPECT_THAT(std::string(today.begin(), today.begin() + 10), testing::AnyOf(before, after));
    EXPECT_EQ(today.substr(10), L"T12:13:14.000Z");
}

TEST(DateTimeUtilsCim, TextsBecomeVariantDatesInUtc) {
    if (test::kWindows) GTEST_SKIP() << "the scripting date-time object is not registered everywhere";
    const std::tuple<const wchar_t*, VARTYPE, double> cases[] = {
        {L"20160510120000.999999+000", VT_DATE, 42500.5}, {L"20160101000000.000000+360", VT_DATE, 42369.75},
        {L"20160510120000.000000-720", VT_DATE, 42501},   {L"20160510******.******+***", VT_DATE, 42500},
        {L"********120000.000000+000", VT_NULL, 0},       {L"00000007120000.000000:000", VT_NULL, 0},
        {L"16010101000000.000000+060", VT_NULL, 0},  // before the calendar once in UTC
        {L"20161310120000.000000+000", VT_EMPTY, 0},      {L"20160230120000.000000+000", VT_EMPTY, 0},
        {L"2016051012000x.000000+000", VT_EMPTY, 0},      {L"201605101200*1.000000+000", VT_EMPTY, 0},
        {L"20160510120000.0000*0+000", VT_EMPTY, 0},      {L"20160510120000.000000 000", VT_EMPTY, 0},
        {L"20160510120000.000000+00", VT_EMPTY, 0},       {nullptr, VT_EMPTY, 0},
    };
    for (const auto& [text, type, date] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        const VARIANT value = DT::CimDateTimeToVariantDate(_bstr_t(text));
        EXPECT_EQ(value.vt, type);
        EXPECT_DOUBLE_EQ(value.date, date);
    }
    const VARIANT date = DT::CimDateTimeToVariantDate(_bstr_t(L"20160510120000.000000+000"));
    EXPECT_EQ(DT::VT_DATEToJsonDateTime(date), "2016-05-10T12:00:00.000+00:00");
}

TEST(DateTimeUtilsCim, WithoutTheComObjectNoDate) {
    if (!test::kWindows) GTEST_SKIP() << "COM is Windows'";
    // COM is not initialised on this thread.
    EXPECT_EQ(DT::CimDateTimeToVariantDate(_bstr_t(L"20160510120000.000000+000")).vt, VT_EMPTY);
}

int PrintLocalTimes(const std::vector<std::string>&) {
    std::puts(DT::FormatTimeTAsAscTime(1462881600).c_str());
    std::puts(DT::FileTimeToJsonDateTime(At(kNoon)).c_str());
    std::puts(DT::DATEToJsonDateTime(42500.5).c_str());
    std::puts(DT::ColeDateTimeToJsonDateTime(ATL::COleDateTime(42500.5)).c_str());
    for (const int month : {1, 7}) {
        const TimePoint noon = DT::YMDHMSToTimePoint(2016, month, 1, 12, 0, 0);
        std::puts(DT::FormatTimeAsISO8601(noon).c_str());
    }
    return 0;
}
const test::ChildMode localTimes("local-times", PrintLocalTimes);

std::string LocalTimesIn(const std::string& zone) {
    const test::TempDir dir;
    const auto output = dir.Native("times").string();
    const auto command = "TZ='" + zone + "' " + test::ChildCommand("local-times") + " > '" + output + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return dir.Read("times");
}

TEST(DateTimeUtilsLocal, FollowsTheZoneOfTheMachine) {
    if (test::kWindows) GTEST_SKIP() << "the machine's zone cannot be chosen for one process";
    EXPECT_EQ(LocalTimesIn("XST-5:30"),
              "Tue May 10 17 : 30:00 2016\n2016-05-10T17:30:00.000+05:30\n2016-05-10T17:30:00.000+05:30\n"
              "2016-05-10T12:00:00.000+05:30\n2016-01-01T06:30:00.000Z\n2016-07-01T06:30:00.000Z\n");
    EXPECT_EQ(LocalTimesIn("XST0:15"),
              "Tue May 10 11 : 45:00 2016\n2016-05-10T11:45:00.000-00:15\n2016-05-10T11:45:00.000-00:15\n"
              "2016-05-10T12:00:00.000-00:15\n2016-01-01T12:15:00.000Z\n2016-07-01T12:15:00.000Z\n");
    // Daylight saving time: on in the text of May, off in the reading of July; the
    // JSON forms take the offset of the day on which the test runs.
    EXPECT_THAT(LocalTimesIn("EST5EDT,M3.2.0,M11.1.0"),
                testing::MatchesRegex("Tue May 10 08 : 00:00 2016\n"
                                      "(2016-05-10T08:00:00.000-04:00|2016-05-10T07:00:00.000-05:00)\n"
                                      "2016-05-10T0.:00:00.000-0.:00\n2016-05-10T12:00:00.000-0.:00\n"
                                      "2016-01-01T17:00:00.000Z\n2016-07-01T17:00:00.000Z\n"));
}

}  // namespace
}  // namespace quillon
