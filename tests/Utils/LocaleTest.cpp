#include <gmock/gmock.h>

#include <cstdarg>
#include <cstdlib>
#include <sstream>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/NetworkUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/SequenceNumberUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/Url.h"
#include "quillon/Version.h"
#include "support/ForeignLocale.h"

/// The library does and writes the same whatever locale a host or a module has set.

namespace quillon::test {
namespace {

using SU = StringUtils;

std::string Formatted(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = SU::Format(format, arguments);
    va_end(arguments);
    return text;
}

class LocaleTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!locale.IsSet()) GTEST_SKIP() << "this machine does not have the locale";
    }
    const ForeignLocale locale{GetParam()};
};

TEST_P(LocaleTest, FormatWritesNumbersWithAPoint) {
    EXPECT_EQ(Formatted("%f|%.2f|%.0f|%#.0f|%F", 1234567.5, -0.005, 1.5, 2.0, 0.25),
              "1234567.500000|-0.01|2|2.|0.250000");
    EXPECT_EQ(Formatted("%e|%.0e|%#.0E|%g|%G|%#g", 1234.5, 15.0, 15.0, 1e-9, 1e20, 1.5),
              "1.234500e+03|2e+01|2.E+01|1e-09|1E+20|1.50000");
    EXPECT_EQ(Formatted("%9.2f|%-9.2f|%+09.2f|%0*.1f|% .1f|", 1.25, 1.25, 1.25, -7, -2.5, 0.5),
              "     1.25|1.25     |+00001.25|-2.5   | 0.5|");
    EXPECT_EQ(Formatted("%.3Lf|%.1a|%016.1a", 2.5L, 1.5625, -1.5), "2.500|0x1.9p+0|-0x00000001.8p+0");
    EXPECT_EQ(Formatted("%'d|%'8.1f|%d|%ls", 1234567, 12345.5, -1234567, L"\x4E2D"),
              "1234567| 12345.5|-1234567|\xE4\xB8\xAD");
}

TEST_P(LocaleTest, LettersAndBlanksAreThoseOfAscii) {
    EXPECT_EQ(SU::ToLowercase("TITLE \xC3\x89\xC9"), "title \xC3\x89\xC9");
    EXPECT_EQ(SU::ToUppercase("title \xC3\xA9\xE9"), "TITLE \xC3\xA9\xE9");
    EXPECT_EQ(SU::ToLowercase(L"TITLE \x0130\xC9"), L"title \x0130\xC9");
    EXPECT_EQ(SU::ToUppercase(L"title \x0131\xE9"), L"TITLE \x0131\xE9");
    EXPECT_TRUE(SU::CompareCaseInsensitive("TITLE", "title") &&
                SU::CompareCaseInsensitive(L"TITLE", L"title"));
    EXPECT_EQ(SU::FindCaseInsensitive("a TITLE", "title"), 2u);
    EXPECT_TRUE(SU::EndsWith("x.INI", ".ini", false));
    std::string text = "\xC3\xA0\xA0", title = "TITLE";
    EXPECT_EQ(SU::Trim(text), "\xC3\xA0\xA0")
        << "0xA0 is a blank of code page 1252, and ends U+00E0 in UTF-8";
    EXPECT_TRUE(SU::ReplaceStringInPlaceCaseInsensitive(title, "title", "x", false));
    EXPECT_EQ(PathUtils::SanitizeTextForFilename("I\xC3\xA9\xE9-i"), "I____i");
    EXPECT_EQ(Url::Parse("HTTPS://i").Port(), 443u);
    EXPECT_FALSE(Url::Parse("h\xE9://i").IsValid());
    static char variable[] = "QUILLON_TITLE_I=found";
    ASSERT_EQ(::putenv(variable), 0);
    EXPECT_EQ(SU::ExpandEnvironmentVariables("%quillon_title_i%") + "|" +
                  SU::WideStringToNarrow(SU::ExpandEnvironmentVariables(L"%quillon_title_i%")),
              "found|found");
}

TEST_P(LocaleTest, DatesHaveTheNamesOfTheCLocale) {
    EXPECT_EQ(DateTimeUtils::FormatTimeTAsAscTime(1462881600 + 86400 * 300), "Mon Mar 06 12 : 00:00 2017");
    EXPECT_EQ(DateTimeUtils::FormatTimeAsISO8601(1462881600LL), "2016-05-10T12:00:00.000Z");
    EXPECT_EQ(DateTimeUtils::FormatTimeSpanAsString(86'400'000LL), "1000d 0h 0m 0s");
    EXPECT_EQ(DateTimeUtils::JsonDateTimeToEpochTime("2016-05-10T12:00:00.500+05:30"), 1462861801);
}

TEST_P(LocaleTest, ValuesAreWrittenAndReadAlike) {
    EXPECT_EQ(Variant(1234567.25).AsString() + "|" + Variant(1234567LL).AsString(), "1.23457e+06|1234567");
    DataTable table;
    VariantList row;
    row.Add("n", 1234.5);
    table.AddRow(std::move(row));
    std::ostringstream streamed;
    streamed << table << Variant(1234.5) << Version("1234.5") << *table.begin();
    EXPECT_EQ(streamed.str(), "     n\n------\n1234.5\n1234.51234.5.0.0{n=1234.5}");
    std::ostringstream shown;
    PrintTo(DataTable(), &shown);
    EXPECT_EQ(shown.str(), "0 rows, undefined");
    EXPECT_EQ(SU::StringToInt("1234567"), 1234567);
    EXPECT_TRUE(SU::CompareDottedVersions("1000.01", "1000.1"));
    EXPECT_EQ(NetworkUtils::GetNetworkCidrAddressFromAddressAndMask("172.16.200.1", "255.255.128.0"),
              "172.16.128.0/17");
    std::vector<unsigned long long> numbers;
    SequenceNumberUtils::SequenceNumberCsvToList("1234567,89", numbers);
    EXPECT_EQ(SequenceNumberUtils::SequenceNumberListToCsv(numbers), "1234567,89");
}

INSTANTIATE_TEST_SUITE_P(, LocaleTest, testing::Values("C", "de_DE", "fr_FR", "ps_AF", "tr_TR"));

}  // namespace
}  // namespace quillon::test
