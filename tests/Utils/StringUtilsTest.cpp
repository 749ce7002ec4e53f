#include "quillon/StringUtils.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "support/RecordingLogger.h"
#include "support/System.h"

namespace quillon {
namespace {

using test::RecordingLogger;
using testing::ElementsAre;
using testing::StartsWith;
using namespace std::string_literals;
using SU = StringUtils;
using Pieces = std::vector<std::string>;

constexpr auto kNotFound = ~0ULL;

std::wstring Widen(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

TEST(StringUtilsConversion, InvalidTextGivesNothingAndOneErrorEntry) {
    const std::wstring loneSurrogate = {L'a', 0xD800};
    const std::string badNarrow = "Invalid narrow string for conversion to wide";
    const std::string badWide = "Invalid wide string for conversion to narrow";
    RecordingLogger log;
    EXPECT_EQ(SU::NarrowStringToWide("a\xFF"), L"");
    EXPECT_EQ(SU::WideStringToNarrow(loneSurrogate), "");
    EXPECT_EQ(SU::StringToInt(loneSurrogate), 0);
    EXPECT_THROW(SU::Utf16LeToUtf8(loneSurrogate), std::range_error);
    EXPECT_EQ(SU::Utf8Count("a\xFF"), 0u);
    EXPECT_THAT(log.Lines(), ElementsAre(badNarrow, badWide, badWide, badNarrow));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error), testing::SizeIs(4));
}

TEST(StringUtilsConversion, CountsAndCopiesUtf16Units) {
    const std::string text = "a\xC3\xA9\xF0\x9F\x98\x80";
    EXPECT_EQ(SU::Utf8Count(text), 4u);
    EXPECT_EQ(SU::Utf16LeToUtf8({L'a', 0xE9, 0xD83D, 0xDE00}), text);

    std::uint16_t* buffer = nullptr;
    std::size_t byteCount = 1;
    EXPECT_TRUE(SU::StringToUtf16le(text, buffer, byteCount));
    std::unique_ptr<std::uint16_t[]> owner(buffer);
    ASSERT_EQ(byteCount, 8u);
    EXPECT_THAT(std::vector<int>(buffer, buffer + 4), ElementsAre('a', 0xE9, 0xD83D, 0xDE00));

    EXPECT_TRUE(SU::StringToUtf16le(L"", buffer, byteCount));
    owner.reset(buffer);
    EXPECT_NE(buffer, nullptr);
    EXPECT_EQ(byteCount, 0u);
}

TEST(StringUtilsTrim, RemovesExactlyWhatEachNames) {
    using Narrow = std::string& (*)(std::string&);
    using Wide = std::wstring& (*)(std::wstring&);
    const std::tuple<Narrow, Wide, std::string, std::string> cases[] = {
        {SU::LeftTrim, SU::LeftTrim, " \t\n\v\f\r a ", "a "},
        {SU::RightTrim, SU::RightTrim, " a \t\n\v\f\r", " a"},
        {SU::Trim, SU::Trim, "\t a b \r\n", "a b"},
        {SU::Trim, SU::Trim, " \v\f ", ""},
        {SU::Trim, SU::Trim, " a\0 "s, "a\0"s},
        {SU::Trim, nullptr, "\xC2\xA0\xC3\xA9 ", "\xC2\xA0\xC3\xA9"},
        {SU::TrimQuotes, nullptr, "\"\"a\"b\"\"\"", "a\"b"},
        {SU::TrimQuotes, nullptr, "\"\"\"", ""},
        {SU::TrimAllSpaces, SU::TrimAllSpaces, " a\tb\r\n c ", "abc"},
        {SU::TrimTrailingNewlineCharacters, SU::TrimTrailingNewlineCharacters, "x\v\n\r\f", "x\v"},
        {SU::TrimTrailingPathSeparatorCharacters, SU::TrimTrailingPathSeparatorCharacters, "a/\\\\", "a/"},
        {SU::StringToLowercase, SU::StringToLowercase, "@AZ[`az{", "@az[`az{"},
        {SU::StringToUppercase, SU::StringToUppercase, "@AZ[`az{", "@AZ[`AZ{"},
        {SU::StringToUppercase, nullptr, "\xC3\xA9", "\xC3\xA9"},
    };
    for (const auto& [trimNarrow, trimWide, before, after] : cases) {
        SCOPED_TRACE(testing::PrintToString(before));
        std::string text = before;
        EXPECT_EQ(&trimNarrow(text), &text);
        EXPECT_EQ(text, after);
        if (trimWide == nullptr) continue;
        std::wstring wide = Widen(before);
        EXPECT_EQ(&trimWide(wide), &wide);
        EXPECT_EQ(wide, Widen(after));
    }
    std::string text = "axx";
    EXPECT_EQ(SU::TrimTrailing(text, 'x'), "a");
}

TEST(StringUtilsTrim, CollapsesSnipsAndTruncates) {
    EXPECT_EQ(SU::CollapseWhitespace("  a \t b\r\n"), " a b ");
    EXPECT_EQ(SU::CollapseWhitespace(""), "");
    EXPECT_EQ(SU::Truncate("abcdef", 3), "abc...");
    EXPECT_EQ(SU::Truncate("abc", 3), "abc");

    const std::string whole = "one two three";
    const std::pair<unsigned long long, std::string> cases[] = {
        {13, whole}, {12, "one two "}, {8, "one two "}, {7, "one "}, {3, whole}, {0, whole},
    };
    for (const auto& [limit, expected] : cases) {
        std::string text = whole;
        EXPECT_EQ(SU::Snip(text, ' ', limit), expected != whole) << limit;
        EXPECT_EQ(text, expected) << limit;
    }
}

TEST(StringUtilsSearch, ComparesWithAndWithoutCase) {
    EXPECT_TRUE(SU::CompareCaseInsensitive("aB\xC3\xA9", "Ab\xC3\xA9"));
    EXPECT_FALSE(SU::CompareCaseInsensitive("[", "{")) << "only letters have two cases";
    EXPECT_FALSE(SU::CompareCaseInsensitive(L"a", L"ab"));
    EXPECT_FALSE(SU::StartsWith("abc", "abcd"));
    EXPECT_TRUE(SU::EndsWith("file.TXT", ".txt", false));
    EXPECT_FALSE(SU::EndsWith(L"file.TXT", L".txt", true));
    EXPECT_FALSE(SU::EndsWith("txt", ".txt", false));
}

TEST(StringUtilsSearch, FindsTheFirstMatchInAnyCase) {
    const std::string manyHalves = std::string(5000, 'a') + "B";
    const std::tuple<std::string, std::string, unsigned long long> cases[] = {
        {"abcABC", "CA", 2},
        {"abc", "abcd", kNotFound},
        {"abc", "", 0},
        {"", "", kNotFound},
        {"x@`", "`", 2},
        {"a\0b"s, "\0B"s, 1},
        {"aab", "AB", 1},
        {manyHalves, "aAAab", 4996},
        {manyHalves, std::string(1000, 'A') + "xB", kNotFound},
        {std::string(5000, 'a') + "xab", std::string(50, 'A') + "XAB", 4950},
    };
    for (const auto& [haystack, needle, expected] : cases) {
        EXPECT_EQ(SU::FindCaseInsensitive(haystack, needle), expected) << needle;
        EXPECT_EQ(SU::FindCaseInsensitive(Widen(haystack), Widen(needle)), expected) << needle;
    }
}

TEST(StringUtilsSearch, ComparesDottedVersionsAsNumbersWhereTheyAre) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"10.0.1", "10.00.01", true},
        {"1.2", "1.2.0", false},
        {"1.a", "1.A", false},
        {"1..3", "1.0.3", true},
        {"1.a", "1.a", true},
        {"", "0", true},
        {"1.01a", "1.1a", false},
        {"99999999999999999999", "99999999999999999998", false},
        {"99999999999999999999", "099999999999999999999", true},
    };
    for (const auto& [a, b, equal] : cases)
        EXPECT_EQ(SU::CompareDottedVersions(a, b), equal) << a << " " << b;
}

TEST(StringUtilsSearch, ReadsOnlyPlainNumbers) {
    const std::tuple<std::string, int, bool> cases[] = {
        {"007", 7, true},
        {"-5", 0, false},
        {" 5", 0, false},
        {"", 0, false},
        {"5x", 0, false},
        {"2147483647", 2147483647, true},
        {"2147483648", 2147483647, true},
        {"99999999999999999999999999", 2147483647, true},
    };
    for (const auto& [text, value, expected] : cases) {
        bool isNumber = !expected;
        EXPECT_EQ(SU::StringToInt(text, &isNumber), value) << text;
        EXPECT_EQ(isNumber, expected) << text;
    }
    EXPECT_EQ(SU::StringToInt(L"007"), 7);
}

TEST(StringUtilsReplace, NeverSearchesWhatItPutIn) {
    const std::tuple<std::string, std::string, std::string, bool, std::string, std::string> cases[] = {
        {"aXbxc", "x", "XX", false, "aXbXXc", "aXXbXXc"},
        {"aXbxc", "x", "", true, "aXbc", "abxc"},
        {"aaaa", "aa", "a", false, "aa", "aa"},
        {"aaa", "aa", "b", false, "ba", "ba"},
        {"abc", "", "x", false, "abc", "abc"},
        {"", "a", "x", false, "", ""},
        {"a\0b\0"s, "\0"s, "00", false, "a00b00", "a00b00"},
    };
    for (const auto& [before, find, replacement, firstOnly, after, afterInAnyCase] : cases) {
        SCOPED_TRACE(before + " " + find);
        std::string text = before, anyCase = before;
        EXPECT_EQ(SU::ReplaceStringInPlace(text, find, replacement, firstOnly), before != after);
        EXPECT_EQ(text, after);
        SU::ReplaceStringInPlaceCaseInsensitive(anyCase, find, replacement, firstOnly);
        EXPECT_EQ(anyCase, afterInAnyCase);
    }
    std::wstring wide = L"aXbxc";
    EXPECT_TRUE(SU::ReplaceStringInPlaceCaseInsensitive(wide, L"x", L"", true));
    EXPECT_EQ(wide, L"abxc");
    std::string text = "aa";
    EXPECT_TRUE(SU::ReplaceStringInPlace(text, text, text, false)) << "one text in all places";
    EXPECT_EQ(text, "aa");
}

TEST(StringUtilsDelete, StartsAgainAfterEachDeletion) {
    const std::tuple<std::string, std::string, bool, std::string> cases[] = {
        {"aabb", "ab", true, "ab"},           {"aabb", "ab", false, ""},
        {"xaabaabbby", "aab", false, "xbby"}, {"aaabc", "a", false, "bc"},
        {"abcabcabcab", "abc", false, "ab"},  {"xxabcx", "xab", false, "xcx"},
        {"abab", "aba", false, "b"},          {"abc", "", false, "abc"},
        {"abc", "abcd", false, "abc"},
    };
    for (const auto& [before, find, firstOnly, after] : cases) {
        SCOPED_TRACE(before + " " + find);
        std::string text = before;
        EXPECT_EQ(SU::DeleteStringInPlace(text, find, firstOnly), before != after);
        EXPECT_EQ(text, after);
        std::wstring wide = Widen(before), upper = Widen(SU::ToUppercase(find));
        SU::DeleteStringInPlaceCaseInsensitive(wide, upper, firstOnly);
        EXPECT_EQ(wide, Widen(after));
    }
}

// Naive algorithms, or ones that shift the tail, would take hours over these.
TEST(StringUtilsReplace, HostileTextsTakeLinearTime) {
    constexpr std::size_t size = 20'000'000;
    std::string text(size, 'a');
    const std::string needle = std::string(50'000, 'a') + "ba";
    EXPECT_EQ(SU::FindCaseInsensitive(text, needle), kNotFound);
    EXPECT_FALSE(SU::ReplaceStringInPlace(text, needle, "x", false));
    EXPECT_FALSE(SU::DeleteStringInPlace(text, needle, false));

    std::fill(text.begin() + size / 2, text.end(), 'b');
    EXPECT_TRUE(SU::DeleteStringInPlace(text, "ab", false));
    EXPECT_EQ(text, "");
}

TEST(StringUtilsSize, AHundredMegabytesComeBackWhole) {
    if (test::kSanitized) GTEST_SKIP() << "takes too long under a sanitizer";
    const std::string text(100'000'000, ' ');  // compared by EXPECT_TRUE: EXPECT_EQ would print it
    EXPECT_TRUE(SU::UrlDecode(SU::UrlEncode(text)) == text);
    EXPECT_TRUE(SU::WideStringToNarrow(SU::NarrowStringToWide(text)) == text);

    std::string copy = text;
    auto* const bytes = reinterpret_cast<unsigned char*>(copy.data());
    std::size_t count = 0;
    EXPECT_TRUE(
        SU::HexStringToByteArray(SU::ByteArrayToHexString(bytes, text.size()), bytes, text.size(), count));
    EXPECT_EQ(count, text.size());
    EXPECT_TRUE(SU::ReplaceStringInPlace(copy, "  ", " \t ", false));
    EXPECT_TRUE(SU::ReplaceStringInPlaceCaseInsensitive(copy, " \t ", "  ", false));
    EXPECT_TRUE(copy == text);

    copy[text.size() / 2] = '\n';
    copy.back() = 'x';
    EXPECT_EQ(SU::FindCaseInsensitive(copy, " X"), text.size() - 2);
    Pieces pieces;
    SU::SplitByChar(copy, '\n', pieces);
    EXPECT_TRUE(SU::StringVecToString(pieces, '\n') == copy);
    EXPECT_EQ(SU::CollapseWhitespace(copy), " x");
    EXPECT_EQ(SU::Trim(copy), "x");
}

TEST(StringUtilsSplit, KeepsEveryPiece) {
    const std::pair<std::string, Pieces> cases[] = {
        {"a,b", {"a", "b"}}, {"a,,b", {"a", "", "b"}}, {"a,", {"a", ""}}, {"", {""}}, {",", {"", ""}},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        Pieces pieces = {"old"};
        SU::SplitByChar(text, ',', pieces);
        EXPECT_EQ(pieces, expected);
        EXPECT_EQ(SU::StringVecToString(pieces, ','), text);
    }
    EXPECT_EQ(SU::StringVecToString({}, ','), "");
    std::vector<std::wstring> wide;
    SU::SplitByChar(L",b", L',', wide);
    EXPECT_THAT(wide, ElementsAre(L"", L"b"));
    Pieces pieces = {"a,b"};
    SU::SplitByChar(pieces[0], ',', pieces);
    EXPECT_THAT(pieces, ElementsAre("a", "b")) << "the text may be an old piece";
}

TEST(StringUtilsSplit, ByTextWithoutOverlap) {
    const std::tuple<std::string, std::string, Pieces, Pieces> cases[] = {
        {"a--b--", "--", {"a", "b", ""}, {"a", "b"}},
        {"", "--", {""}, {}},
        {"a---b", "--", {"a", "-b"}, {"a", "-b"}},
        {"----", "--", {"", "", ""}, {}},
        {"ab", "", {"ab"}, {"ab"}},
        {"", "", {""}, {""}},
    };
    for (const auto& [text, separator, all, filled] : cases) {
        Pieces pieces;
        SU::SplitByString(text, separator, pieces, false);
        EXPECT_EQ(pieces, all) << text;
        SU::SplitByString(text, separator, pieces, true);
        EXPECT_EQ(pieces, filled) << text;
    }
}

TEST(StringUtilsEscape, ProtectsAndEscapes) {
    EXPECT_EQ(SU::ProtectInQuotedString("a\\\"b"), "a\\\\\\\"b");
    EXPECT_EQ(SU::ProtectInQuotedString(L"\\"), L"\\\\");
    EXPECT_EQ(SU::ProtectPercents("50% %s"), "50%% %%s");
    EXPECT_EQ(SU::UrlEncode(" !#$&'()*+,;=@[]"), "%20%21%23%24%26%27%28%29%2A%2B%2C%3B%3D%40%5B%5D");
    EXPECT_EQ(SU::UrlEncode("aZ09%/:?-._~\"<\xC3\xA9"), "aZ09%/:?-._~\"<\xC3\xA9");
    EXPECT_EQ(SU::UrlDecode("%4g%41%"), "%4gA%");
    EXPECT_EQ(SU::UrlDecode("a+b%2f%C3%a9%00%%34%4"), "a+b/\xC3\xA9\0%4%4"s);
}

TEST(StringUtilsEscape, DumpsAndReadsBytes) {
    const unsigned char bytes[] = {0x00, 0x1F, 0x20, 0x7E, 0x7F, 0xFF};
    EXPECT_EQ(SU::ByteArrayToHexString(bytes, 6), "001f207e7fff");
    EXPECT_EQ(SU::ByteArrayToHexString(nullptr, 0), "");
    EXPECT_EQ(SU::ByteArrayToAsciiChars(bytes, 6), ".. ~..");

    const std::tuple<const char*, std::size_t, bool, std::size_t> cases[] = {
        {"0aFf", 2, true, 2}, {"0aFf", 1, false, 1},   {"abc", 2, false, 77},
        {"", 0, true, 0},     {"0a/fFF", 2, false, 1}, {"0a0\xFF", 2, false, 1},
    };
    for (const auto& [hex, room, result, expected] : cases) {
        SCOPED_TRACE(hex);
        unsigned char buffer[2] = {};
        std::size_t count = 77;
        EXPECT_EQ(SU::HexStringToByteArray(hex, buffer, room, count), result);
        EXPECT_EQ(count, expected);
        EXPECT_EQ(buffer[0], count == 1 || count == 2 ? 0x0A : 0);
        EXPECT_EQ(buffer[1], count == 2 ? 0xFF : 0) << "nothing past the room";
    }
}

QUILLON_PRINTF(1, 2) std::string Formatted(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = SU::Format(format, arguments);
    va_end(arguments);
    return text;
}

TEST(StringUtilsFormat, IsBoundedAsIsTheIndentation) {
    EXPECT_EQ(Formatted("a%cb", 0), "a\0b"s);
    EXPECT_EQ(Formatted("%9999s", "x").size(), 9999u);
    EXPECT_EQ(Formatted("%s", std::string(20000, 'x').c_str()), std::string(9999, 'x'));
    EXPECT_EQ(Formatted("%2500000d", 1), std::string(9999, ' ')) << "without memory for the whole";
    EXPECT_STREQ(SU::IndentBy(3), "   ");
    EXPECT_EQ(SU::IndentBy(41), std::string(40, ' '));
}

TEST(StringUtilsFormat, AFailingFormatIsQuoted) {
    const std::string failing = "%d%n";  // it would write to memory
    int written = 7;
    EXPECT_EQ(Formatted(failing.c_str(), 1, &written), "Invalid Log format: " + failing);
    EXPECT_EQ(written, 7);
}

TEST(StringUtilsFormat, ExpandsKnownEnvironmentVariablesOnly) {
    static char variable[] = "QUILLON_TEXT_TEST=value%PATH%";
    ASSERT_EQ(putenv(variable), 0);
    EXPECT_EQ(SU::ExpandEnvironmentVariables("<%Quillon_Text_Test%>"s), "<value%PATH%>");
    EXPECT_EQ(SU::ExpandEnvironmentVariables("100%"s), "100%");
    EXPECT_EQ(SU::ExpandEnvironmentVariables("%no such variable%"s), "%no such variable%");
    EXPECT_EQ(SU::ExpandEnvironmentVariables(L"%QUILLON_TEXT_TEST%\x4E2D"s), L"value%PATH%\x4E2D");
    EXPECT_EQ(SU::ExpandEnvironmentVariables("caf\xE9 %QUILLON_TEXT_TEST%"s), "caf\xE9 value%PATH%");
}

TEST(StringUtilsErrors, TextsCarryBothFormsOfTheCode) {
    RecordingLogger log;
    EXPECT_EQ(SU::GetErrorAsString(0), "");
    EXPECT_THAT(SU::GetErrorAsString(5), StartsWith("(5/0X5) Access "));
    EXPECT_EQ(SU::GetErrorCodeAsString(5), SU::GetErrorAsString(5));
    EXPECT_THAT(SU::GetErrorAsString(-2147024891), StartsWith("(-2147024891/0X80070005) "));
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_EQ(SU::GetErrorAsString(0x2FFF0001), "(unknown error code 805240833/0X2fff0001)");
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                ElementsAre("Could not format error 805240833 because of error 317"));
}

TEST(StringUtilsErrors, StatusTextsAreOneLine) {
    RecordingLogger log;
    EXPECT_EQ(SU::GetNtstatusAsString(0), "");
    EXPECT_EQ(SU::GetNtstatusAsString(0x103), "");
    // Where the system has no message table for them, the unknown form is right too.
    const std::string text = SU::GetNtstatusAsString(-1073741790);
    EXPECT_THAT(text, testing::AnyOf("(unknown NTSTATUS code -1073741790/0Xc0000022)",
                                     StartsWith("(-1073741790/0Xc0000022) ")));
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(SU::GetNtstatusAsString(-1), "(unknown NTSTATUS code -1/0Xffffffff)");
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

}  // namespace
}  // namespace quillon
