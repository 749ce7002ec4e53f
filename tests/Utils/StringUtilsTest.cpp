#include "quillon/StringUtils.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/RecordingLogger.h"
#include "support/System.h"

namespace quillon {
namespace {

using test::RecordingLogger;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using namespace std::string_literals;
using Pieces = std::vector<std::string>;

constexpr auto kNotFound = ~0ULL;

std::wstring Widen(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

TEST(StringUtilsConversion, InvalidTextGivesNothingAndOneErrorEntry) {
    const std::wstring loneSurrogate = {L'a', 0xD800};
    const struct {
        const char* what;
        std::function<bool()> isEmpty;
        std::string message;
    } cases[] = {
        {"narrow", [] { return StringUtils::NarrowStringToWide("a\xFF").empty(); },
         "Invalid narrow string for conversion to wide"},
        {"count", [] { return StringUtils::Utf8Count("a\xFF") == 0; },
         "Invalid narrow string for conversion to wide"},
        {"wide", [&] { return StringUtils::WideStringToNarrow(loneSurrogate).empty(); },
         "Invalid wide string for conversion to narrow"},
        {"wide number", [&] { return StringUtils::StringToInt(loneSurrogate) == 0; },
         "Invalid wide string for conversion to narrow"},
    };
    RecordingLogger log;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        log.Forget();
        EXPECT_TRUE(c.isEmpty());
        EXPECT_THAT(log.Lines(ICLogger::Level::Error), ElementsAre(c.message));
    }
    log.Forget();
    EXPECT_THROW(StringUtils::Utf16LeToUtf8(loneSurrogate), std::range_error);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(StringUtilsConversion, CountsAndCopiesUtf16Units) {
    const std::string text = "a\xC3\xA9\xF0\x9F\x98\x80";
    EXPECT_EQ(StringUtils::Utf8Count(text), 4u);
    EXPECT_EQ(StringUtils::Utf16LeToUtf8({L'a', 0xE9, 0xD83D, 0xDE00}), text);

    std::uint16_t* buffer = nullptr;
    std::size_t byteCount = 1;
    EXPECT_TRUE(StringUtils::StringToUtf16le(text, buffer, byteCount));
    std::unique_ptr<std::uint16_t[]> owner(buffer);
    ASSERT_EQ(byteCount, 8u);
    EXPECT_THAT(std::vector<int>(buffer, buffer + 4), ElementsAre('a', 0xE9, 0xD83D, 0xDE00));

    EXPECT_TRUE(StringUtils::StringToUtf16le(L"", buffer, byteCount));
    owner.reset(buffer);
    EXPECT_NE(buffer, nullptr);
    EXPECT_EQ(byteCount, 0u);
}

TEST(StringUtilsTrim, RemovesExactlyWhatEachNames) {
    using Narrow = std::string& (*)(std::string&);
    using Wide = std::wstring& (*)(std::wstring&);
    const struct {
        Narrow narrow;
        Wide wide;
        std::string text, expected;
    } cases[] = {
        {StringUtils::LeftTrim, StringUtils::LeftTrim, " \t\n\v\f\r a ", "a "},
        {StringUtils::RightTrim, StringUtils::RightTrim, " a \t\n\v\f\r", " a"},
        {StringUtils::Trim, StringUtils::Trim, "\t a b \r\n", "a b"},
        {StringUtils::Trim, StringUtils::Trim, " \v\f ", ""},
        {StringUtils::Trim, StringUtils::Trim, " a\0 "s, "a\0"s},
        {StringUtils::Trim, nullptr, "\xC2\xA0\xC3\xA9 ", "\xC2\xA0\xC3\xA9"},
        {StringUtils::TrimQuotes, nullptr, "\"\"a\"b\"\"\"", "a\"b"},
        {StringUtils::TrimQuotes, nullptr, "\"\"\"", ""},
        {StringUtils::TrimAllSpaces, StringUtils::TrimAllSpaces, " a\tb\r\n c ", "abc"},
        {StringUtils::TrimTrailingNewlineCharacters, StringUtils::TrimTrailingNewlineCharacters, "x\n\r\f",
         "x"},
        {StringUtils::TrimTrailingNewlineCharacters, StringUtils::TrimTrailingNewlineCharacters, "x\v\n",
         "x\v"},
        {StringUtils::TrimTrailingPathSeparatorCharacters, StringUtils::TrimTrailingPathSeparatorCharacters,
         "C:\\dir\\\\", "C:\\dir"},
        {StringUtils::TrimTrailingPathSeparatorCharacters, StringUtils::TrimTrailingPathSeparatorCharacters,
         "C:/dir/", "C:/dir/"},
        {StringUtils::StringToLowercase, StringUtils::StringToLowercase, "@AZ[`az{", "@az[`az{"},
        {StringUtils::StringToUppercase, StringUtils::StringToUppercase, "@AZ[`az{", "@AZ[`AZ{"},
        {StringUtils::StringToUppercase, nullptr, "\xC3\xA9", "\xC3\xA9"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.text));
        std::string text = c.text;
        EXPECT_EQ(&c.narrow(text), &text);
        EXPECT_EQ(text, c.expected);
        if (c.wide == nullptr) continue;
        std::wstring wide = Widen(c.text);
        EXPECT_EQ(&c.wide(wide), &wide);
        EXPECT_EQ(wide, Widen(c.expected));
    }
    std::string text = "axx";
    EXPECT_EQ(StringUtils::TrimTrailing(text, 'x'), "a");
    EXPECT_EQ(StringUtils::TrimTrailing(text, 'a'), "");
}

TEST(StringUtilsTrim, CollapsesSnipsAndTruncates) {
    EXPECT_EQ(StringUtils::CollapseWhitespace("  a \t b\r\n"), " a b ");
    EXPECT_EQ(StringUtils::CollapseWhitespace(""), "");
    EXPECT_EQ(StringUtils::CollapseWhitespace("\n\n"), " ");
    EXPECT_EQ(StringUtils::Truncate("abcdef", 3), "abc...");
    EXPECT_EQ(StringUtils::Truncate("abc", 3), "abc");

    const struct {
        unsigned long long limit;
        bool snipped;
        std::string expected;
    } cases[] = {
        {13, false, "one two three"}, {12, true, "one two "},      {8, true, "one two "}, {7, true, "one "},
        {3, false, "one two three"},  {0, false, "one two three"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.limit);
        std::string text = "one two three";
        EXPECT_EQ(StringUtils::Snip(text, ' ', c.limit), c.snipped);
        EXPECT_EQ(text, c.expected);
    }
}

TEST(StringUtilsSearch, ComparesWithAndWithoutCase) {
    EXPECT_TRUE(StringUtils::CompareCaseInsensitive("aB\xC3\xA9", "Ab\xC3\xA9"));
    EXPECT_FALSE(StringUtils::CompareCaseInsensitive("[", "{")) << "only letters have two cases";
    EXPECT_FALSE(StringUtils::CompareCaseInsensitive(L"a", L"ab"));
    EXPECT_FALSE(StringUtils::CompareCaseSensitive("a", "A"));
    EXPECT_TRUE(StringUtils::StartsWith("abc", ""));
    EXPECT_FALSE(StringUtils::StartsWith("abc", "abcd"));
    EXPECT_TRUE(StringUtils::EndsWith("file.TXT", ".txt", false));
    EXPECT_FALSE(StringUtils::EndsWith(L"file.TXT", L".txt", true));
    EXPECT_TRUE(StringUtils::EndsWith("", "", true));
    EXPECT_FALSE(StringUtils::EndsWith("txt", ".txt", false));
}

TEST(StringUtilsSearch, FindsTheFirstMatchInAnyCase) {
    const std::string manyHalves = std::string(5000, 'a') + "B";
    const struct {
        std::string haystack, needle;
        unsigned long long expected;
    } cases[] = {
        {"abcABC", "CA", 2},
        {"abc", "abcd", kNotFound},
        {"abc", "", 0},
        {"", "", kNotFound},
        {"", "a", kNotFound},
        {"x@`", "`", 2},
        {"a\0b"s, "\0B"s, 1},
        {"aab", "AB", 1},
        {manyHalves, "aAAab", 4996},
        {manyHalves, std::string(1000, 'A') + "xB", kNotFound},
        {std::string(5000, 'a') + "xab", std::string(50, 'A') + "XAB", 4950},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.needle);
        EXPECT_EQ(StringUtils::FindCaseInsensitive(c.haystack, c.needle), c.expected);
        EXPECT_EQ(StringUtils::FindCaseInsensitive(Widen(c.haystack), Widen(c.needle)), c.expected);
    }
}

TEST(StringUtilsSearch, ComparesDottedVersionsAsNumbersWhereTheyAre) {
    const struct {
        const char *a, *b;
        bool equal;
    } cases[] = {
        {"10.0.1", "10.00.01", true},
        {"1.2", "1.2.0", false},
        {"1.a", "1.A", false},
        {"1..3", "1.0.3", true},
        {"1.a", "1.a", true},
        {"", "0", true},
        {"1.01a", "1.1a", false},
        {"99999999999999999999", "099999999999999999999", true},
        {"99999999999999999999", "99999999999999999998", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(StringUtils::CompareDottedVersions(c.a, c.b), c.equal) << c.a << " " << c.b;
    }
}

TEST(StringUtilsSearch, ReadsOnlyPlainNumbers) {
    const struct {
        const char* text;
        int value;
        bool isNumber;
    } cases[] = {
        {"007", 7, true},
        {"-5", 0, false},
        {"+5", 0, false},
        {" 5", 0, false},
        {"", 0, false},
        {"5x", 0, false},
        {"2147483647", 2147483647, true},
        {"2147483648", 2147483647, true},
        {"99999999999999999999999999", 2147483647, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        bool isNumber = !c.isNumber;
        EXPECT_EQ(StringUtils::StringToInt(std::string(c.text), &isNumber), c.value);
        EXPECT_EQ(isNumber, c.isNumber);
        EXPECT_EQ(StringUtils::StringToInt(Widen(c.text)), c.value);
    }
}

TEST(StringUtilsReplace, NeverSearchesWhatItPutIn) {
    const struct {
        std::string text, find, replacement;
        bool firstOnly;
        std::string expected, expectedInAnyCase;
    } cases[] = {
        {"aXbXc", "X", "XX", false, "aXXbXXc", "aXXbXXc"},
        {"aXbxc", "x", "XX", false, "aXbXXc", "aXXbXXc"},
        {"aXbxc", "x", "", true, "aXbc", "abxc"},
        {"aaaa", "aa", "a", false, "aa", "aa"},
        {"aaa", "aa", "b", false, "ba", "ba"},
        {"abc", "", "x", false, "abc", "abc"},
        {"", "a", "x", false, "", ""},
        {"a\0b\0"s, "\0"s, "00", false, "a00b00", "a00b00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text + " " + c.find);
        std::string text = c.text, anyCase = c.text;
        EXPECT_EQ(StringUtils::ReplaceStringInPlace(text, c.find, c.replacement, c.firstOnly),
                  c.text != c.expected);
        EXPECT_EQ(text, c.expected);
        StringUtils::ReplaceStringInPlaceCaseInsensitive(anyCase, c.find, c.replacement, c.firstOnly);
        EXPECT_EQ(anyCase, c.expectedInAnyCase);
        std::wstring wide = Widen(c.text);
        StringUtils::ReplaceStringInPlaceCaseInsensitive(wide, Widen(c.find), Widen(c.replacement),
                                                         c.firstOnly);
        EXPECT_EQ(wide, Widen(c.expectedInAnyCase));
    }
    std::string text = "aa";
    EXPECT_TRUE(StringUtils::ReplaceStringInPlace(text, text, text, false)) << "one text in all places";
    EXPECT_EQ(text, "aa");
}

TEST(StringUtilsDelete, StartsAgainAfterEachDeletion) {
    const struct {
        std::string text, find;
        bool firstOnly;
        std::string expected;
    } cases[] = {
        {"aabb", "ab", true, "ab"},           {"aabb", "ab", false, ""},
        {"xaabaabbby", "aab", false, "xbby"}, {"aaabc", "a", false, "bc"},
        {"abcabcabcab", "abc", false, "ab"},  {"xxabcx", "xab", false, "xcx"},
        {"abab", "aba", false, "b"},          {"abc", "", false, "abc"},
        {"abc", "abcd", false, "abc"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text + " " + c.find);
        std::string text = c.text;
        EXPECT_EQ(StringUtils::DeleteStringInPlace(text, c.find, c.firstOnly), c.text != c.expected);
        EXPECT_EQ(text, c.expected);
        std::wstring wide = Widen(c.text);
        StringUtils::DeleteStringInPlaceCaseInsensitive(wide, Widen(StringUtils::ToUppercase(c.find)),
                                                        c.firstOnly);
        EXPECT_EQ(wide, Widen(c.expected));
    }
}

// Naive algorithms, or ones that shift the tail, would take hours over these.
TEST(StringUtilsReplace, HostileTextsTakeLinearTime) {
    constexpr std::size_t size = 20'000'000;
    std::string text(size, 'a');
    const std::string needle = std::string(50'000, 'a') + "ba";
    EXPECT_EQ(StringUtils::FindCaseInsensitive(text, needle), kNotFound);
    EXPECT_FALSE(StringUtils::ReplaceStringInPlace(text, needle, "x", false));
    EXPECT_FALSE(StringUtils::DeleteStringInPlace(text, needle, false));

    std::fill(text.begin() + size / 2, text.end(), 'b');
    EXPECT_TRUE(StringUtils::DeleteStringInPlace(text, "ab", false));
    EXPECT_EQ(text, "");

    text.assign(size, ' ');
    EXPECT_TRUE(StringUtils::ReplaceStringInPlace(text, "  ", "  \t", false));
    EXPECT_EQ(text.size(), size / 2 * 3);
    EXPECT_EQ(StringUtils::CollapseWhitespace(text), " ");
    EXPECT_EQ(StringUtils::Trim(text), "");
}

TEST(StringUtilsSplit, KeepsEveryPiece) {
    const struct {
        std::string text;
        Pieces expected;
    } cases[] = {
        {"a,b", {"a", "b"}}, {"a,,b", {"a", "", "b"}}, {"a,", {"a", ""}}, {"", {""}}, {",", {"", ""}},
    };
    for (const auto& c : cases) {
        Pieces pieces = {"old"};
        StringUtils::SplitByChar(c.text, ',', pieces);
        EXPECT_EQ(pieces, c.expected) << c.text;
        std::vector<std::wstring> wide;
        StringUtils::SplitByChar(Widen(c.text), L',', wide);
        EXPECT_EQ(wide.size(), c.expected.size());
        StringUtils::SplitByString(c.text, ",", pieces, false);
        EXPECT_EQ(pieces, c.expected) << c.text;
        EXPECT_EQ(StringUtils::StringVecToString(pieces, ','), c.text);
    }
    EXPECT_EQ(StringUtils::StringVecToString({}, ','), "");
    Pieces pieces = {"a,b"};
    StringUtils::SplitByChar(pieces[0], ',', pieces);
    EXPECT_THAT(pieces, ElementsAre("a", "b")) << "the text may be an old piece";
}

TEST(StringUtilsSplit, ByTextWithoutOverlap) {
    const struct {
        std::string text, separator;
        Pieces all, filled;
    } cases[] = {
        {"a--b--", "--", {"a", "b", ""}, {"a", "b"}},
        {"", "--", {""}, {}},
        {"a---b", "--", {"a", "-b"}, {"a", "-b"}},
        {"----", "--", {"", "", ""}, {}},
        {"ab", "", {"ab"}, {"ab"}},
        {"", "", {""}, {""}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        Pieces pieces;
        StringUtils::SplitByString(c.text, c.separator, pieces, false);
        EXPECT_EQ(pieces, c.all);
        StringUtils::SplitByString(c.text, c.separator, pieces, true);
        EXPECT_EQ(pieces, c.filled);
    }
}

TEST(StringUtilsEscape, ProtectsAndEscapes) {
    EXPECT_EQ(StringUtils::ProtectInQuotedString("a\\\"b"), "a\\\\\\\"b");
    EXPECT_EQ(StringUtils::ProtectInQuotedString(L"\\"), L"\\\\");
    EXPECT_EQ(StringUtils::ProtectPercents("50% %s"), "50%% %%s");
    EXPECT_EQ(StringUtils::UrlEncode(" !#$&'()*+,;=@[]"), "%20%21%23%24%26%27%28%29%2A%2B%2C%3B%3D%40%5B%5D");
    EXPECT_EQ(StringUtils::UrlEncode("aZ09%/:?-._~\"<\xC3\xA9"), "aZ09%/:?-._~\"<\xC3\xA9");
    EXPECT_EQ(StringUtils::UrlDecode("%4g%41%"), "%4gA%");
    EXPECT_EQ(StringUtils::UrlDecode("a+b%2f%C3%a9%00%%34%4"), "a+b/\xC3\xA9\0%4%4"s);
}

TEST(StringUtilsEscape, DumpsAndReadsBytes) {
    const unsigned char bytes[] = {0x00, 0x1F, 0x20, 0x7E, 0x7F, 0xFF};
    EXPECT_EQ(StringUtils::ByteArrayToHexString(bytes, 6), "001f207e7fff");
    EXPECT_EQ(StringUtils::ByteArrayToHexString(nullptr, 0), "");
    EXPECT_EQ(StringUtils::ByteArrayToAsciiChars(bytes, 6), ".. ~..");

    const struct {
        const char* hex;
        std::size_t room;
        bool result;
        std::size_t count;
    } cases[] = {{"0aFf", 2, true, 2},
                 {"0aFf", 1, false, 1},
                 {"abc", 2, false, 77},
                 {"", 0, true, 0},
                 {"0a/f", 2, false, 1},
                 {"gg", 2, false, 0},
                 {"0a\xFF"
                  "0",
                  2, false, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.hex);
        unsigned char buffer[2] = {};
        std::size_t count = 77;
        EXPECT_EQ(StringUtils::HexStringToByteArray(c.hex, buffer, c.room, count), c.result);
        EXPECT_EQ(count, c.count);
        EXPECT_EQ(buffer[0], count == 1 || count == 2 ? 0x0A : 0);
        EXPECT_EQ(buffer[1], count == 2 ? 0xFF : 0) << "nothing past the room";
    }
}

QUILLON_PRINTF(1, 2) std::string Formatted(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = StringUtils::Format(format, arguments);
    va_end(arguments);
    return text;
}

TEST(StringUtilsFormat, IsBounded) {
    EXPECT_EQ(Formatted("%s=%lld", "a", 1LL << 40), "a=1099511627776");
    EXPECT_EQ(Formatted("a%cb", 0), "a\0b"s);
    EXPECT_EQ(Formatted("%9999s", "x").size(), 9999u);
    EXPECT_EQ(Formatted("%s", std::string(20000, 'x').c_str()), std::string(9999, 'x'));
}

TEST(StringUtilsFormat, AFailingFormatIsQuoted) {
    if (test::kWindows) GTEST_SKIP() << "the formatter there takes every width";
    // A width past what an int counts.
    const std::string failing = "%2147483648d";
    EXPECT_EQ(Formatted(failing.c_str(), 1), "Invalid Log format: %2147483648d");
}

TEST(StringUtilsFormat, IndentsWithoutAllocating) {
    EXPECT_STREQ(StringUtils::IndentBy(0), "");
    EXPECT_STREQ(StringUtils::IndentBy(3), "   ");
    EXPECT_EQ(StringUtils::IndentBy(100), std::string(40, ' '));
    EXPECT_STREQ(StringUtils::BoolValAsString(true), "true");
    EXPECT_EQ(StringUtils::NewLineString(), "\r\n");
    EXPECT_STREQ(StringUtils::StartNewLine, "\r\n");
}

TEST(StringUtilsFormat, ExpandsKnownEnvironmentVariablesOnly) {
    static char variable[] = "QUILLON_TEXT_TEST=value%PATH%";
    ASSERT_EQ(putenv(variable), 0);
    EXPECT_EQ(StringUtils::ExpandEnvironmentVariables("<%Quillon_Text_Test%>"s), "<value%PATH%>");
    EXPECT_EQ(StringUtils::ExpandEnvironmentVariables("100%"s), "100%");
    EXPECT_EQ(StringUtils::ExpandEnvironmentVariables("%no such variable%"s), "%no such variable%");
    EXPECT_EQ(StringUtils::ExpandEnvironmentVariables(L"%QUILLON_TEXT_TEST%\x4E2D"s), L"value%PATH%\x4E2D");
    EXPECT_EQ(StringUtils::ExpandEnvironmentVariables("caf\xE9 %QUILLON_TEXT_TEST%"s), "caf\xE9 value%PATH%");
}

TEST(StringUtilsErrors, TextsCarryBothFormsOfTheCode) {
    RecordingLogger log;
    EXPECT_EQ(StringUtils::GetErrorAsString(0), "");
    EXPECT_THAT(StringUtils::GetErrorAsString(5), StartsWith("(5/0X5) Access "));
    EXPECT_EQ(StringUtils::GetErrorCodeAsString(5), StringUtils::GetErrorAsString(5));
    EXPECT_THAT(StringUtils::GetErrorAsString(-2147024891), StartsWith("(-2147024891/0X80070005) "));
    EXPECT_THAT(log.Lines(), IsEmpty());

    EXPECT_EQ(StringUtils::GetErrorAsString(0x2FFF0001), "(unknown error code 805240833/0X2fff0001)");
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                ElementsAre("Could not format error 805240833 because of error 317"));
}

TEST(StringUtilsErrors, StatusTextsAreOneLine) {
    RecordingLogger log;
    EXPECT_EQ(StringUtils::GetNtstatusAsString(0), "");
    EXPECT_EQ(StringUtils::GetNtstatusAsString(0x103), "");
    // Where the system has no message table for them, the unknown form is right too.
    const std::string text = StringUtils::GetNtstatusAsString(-1073741790);
    EXPECT_THAT(text, AnyOf("(unknown NTSTATUS code -1073741790/0Xc0000022)",
                            StartsWith("(-1073741790/0Xc0000022) ")));
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(StringUtils::GetNtstatusAsString(-1), "(unknown NTSTATUS code -1/0Xffffffff)");
    EXPECT_THAT(log.Lines(), IsEmpty());
}

}  // namespace
}  // namespace quillon
