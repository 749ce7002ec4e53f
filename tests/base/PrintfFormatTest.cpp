#include "base/PrintfFormat.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <string>

namespace quillon {

namespace {

constexpr std::size_t kSize = 64;

/// The whole length, and what was written.
struct Formatted {
    int length;
    std::string text;
    bool operator==(const Formatted&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Formatted& formatted) {
    return out << formatted.length << " '" << formatted.text << '\'';
}

Formatted Format(const char* format, ...) {
    char buffer[kSize];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = base::FormatBounded(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return {length, length < 0 ? std::string() : std::string(buffer)};
}

}  // namespace

/// A wide text is not plain, so that the whole format is followed by our own code.
TEST(PrintfFormat, FollowsEveryConversionAsTheRuntimeDoes) {
    EXPECT_EQ(Format("%ls|%hhd %hd %d %ld %lld %zd", L"a", -1, -2, -3, -4L, -5LL, std::ptrdiff_t{-6}),
              (Formatted{19, "a|-1 -2 -3 -4 -5 -6"}));
    EXPECT_EQ(Format("%ls|%x %#X %o %u %hhu %llu", L"a", 255, 255, 8, 7, 300, ULLONG_MAX),
              Format("a|%x %#X %o %u %hhu %llu", 255, 255, 8, 7, 300, ULLONG_MAX));
    EXPECT_EQ(Format("%ls|%-6d|%+d|% d|%06d|%6.3d|%.0d", L"a", 1, 2, 3, 4, 5, 0),
              Format("a|%-6d|%+d|% d|%06d|%6.3d|%.0d", 1, 2, 3, 4, 5, 0));
    EXPECT_EQ(Format("%ls|%f %.2e %g %Lf %a", L"a", 1.5, 1234.5, 1e-9, 2.5L, 1.0),
              Format("a|%f %.2e %g %Lf %a", 1.5, 1234.5, 1e-9, 2.5L, 1.0));
    EXPECT_EQ(Format("%ls|%s|%5s|%-5s|%.2s|%c|%%|", L"a", "b", "c", "d", "efg", 'h'),
              Format("a|%s|%5s|%-5s|%.2s|%c|%%|", "b", "c", "d", "efg", 'h'));
    EXPECT_EQ(Format("%*d|%-*d|%.*s|%.*s", 4, 1, 4, 2, 2, "abc", -1, "def"),
              (Formatted{16, "   1|2   |ab|def"}));
    EXPECT_EQ(Format("%*d|", -4, 1), (Formatted{5, "1   |"}));
}

/// A format of texts and decimal numbers alone is followed by our own code as well; "%.0s" makes one that is
/// not.
TEST(PrintfFormat, FollowsSimpleFormatsAsTheRuntimeDoes) {
    const char* const none = nullptr;
    EXPECT_EQ(Format("a%%b%s%c%d|%i|%u", "c", 'd', INT_MIN, INT_MAX, UINT_MAX),
              Format("a%%b%s%c%d|%i|%u%.0s", "c", 'd', INT_MIN, INT_MAX, UINT_MAX, ""));
    EXPECT_EQ(Format("%ld %li %lu", LONG_MIN, LONG_MAX, ULONG_MAX),
              Format("%ld %li %lu%.0s", LONG_MIN, LONG_MAX, ULONG_MAX, ""));
    EXPECT_EQ(Format("%lld %lli %llu", LLONG_MIN, LLONG_MAX, ULLONG_MAX),
              (Formatted{61, "-9223372036854775808 9223372036854775807 18446744073709551615"}));
    EXPECT_EQ(Format("%s", none), (Formatted{6, "(null)"}));
    EXPECT_EQ(Format(""), (Formatted{0, ""}));
    EXPECT_EQ(Format("%s|%d", std::string(kSize, 'x').c_str(), 7),
              (Formatted{kSize + 2, std::string(kSize - 1, 'x')}));
}

TEST(PrintfFormat, FollowsLengthsOfWindowsOnEverySystem) {
    EXPECT_EQ(Format("%I64d|%5I64u|%I64x|%s", LLONG_MIN, 7ULL, ULLONG_MAX, "end"),
              (Formatted{47, "-9223372036854775808|    7|ffffffffffffffff|end"}));
    EXPECT_EQ(Format("%I32d|%-4I32x|%s", -1, 255U, "end"), (Formatted{11, "-1|ff  |end"}));
    EXPECT_EQ(Format("%Iu|%Ix|%s", std::size_t{5'000'000'000}, std::size_t{1} << 36, "end"),
              (Formatted{25, "5000000000|1000000000|end"}));
    EXPECT_EQ(Format("%ws|%wc|%s", L"a", L'b', "end"), (Formatted{7, "a|b|end"}));
}

TEST(PrintfFormat, WideTextsAreUtf8InEveryLocale) {
    for (const char* const name : {"C", "C.UTF-8"}) {
        SCOPED_TRACE(name);
        std::setlocale(LC_ALL, name);
        EXPECT_EQ(Format("%ls", L"\x4E2D\x00E9"), (Formatted{5, "\xE4\xB8\xAD\xC3\xA9"}));
        EXPECT_EQ(Format("<%5ls|%-3lc>", L"\x4E2D", 0xE9), (Formatted{11, "<  \xE4\xB8\xAD|\xC3\xA9 >"}));
        EXPECT_EQ(Format("%.4ls", L"\x4E2D\x4E2D"), (Formatted{3, "\xE4\xB8\xAD"})) << "no character is cut";
        EXPECT_EQ(Format("%ls", L"\xD800"), (Formatted{3, "\xEF\xBF\xBD"}));
        EXPECT_EQ(Format("%S%ls", L"a", static_cast<const wchar_t*>(nullptr)), (Formatted{7, "a(null)"}));
    }
    std::setlocale(LC_ALL, "C");
}

TEST(PrintfFormat, TakesNoMoreMemoryThanTheResult) {
    const std::string blanks(kSize - 1, ' '), zeros(kSize - 1, '0');
    EXPECT_EQ(Format("%2500000d", 1).text, blanks);
    EXPECT_EQ(Format("%2147483648s", "x").text, blanks);
    EXPECT_EQ(Format("%99999999999999999999d", 1).text, blanks);
    EXPECT_EQ(Format("%*d", 2'000'000'000, 1).text, blanks);
    EXPECT_EQ(Format("%.2000000000d", 1).text, zeros);
    EXPECT_EQ(Format("%.*s|", 2'000'000'000, "text").text, "text|");
    EXPECT_EQ(Format("%-*d", INT_MIN, 1).text, "1" + blanks.substr(1));
    const std::string longText(100'000, 'x');
    EXPECT_EQ(Format("%ls%s", L"", longText.c_str()), (Formatted{100'000, longText.substr(0, kSize - 1)}));
}

TEST(PrintfFormat, RefusesWhatItCannotFollow) {
    int written = 7;
    EXPECT_EQ(Format("ab%n", &written).length, -1);
    EXPECT_EQ(written, 7);
    EXPECT_LT(Format("%ls%", L"a").length, 0);
    EXPECT_LT(Format("%ls%k", L"a", 1).length, 0);
    EXPECT_EQ(Format("ab%1$n", &written).length, -1);
    EXPECT_EQ(written, 7);
}

}  // namespace quillon
