#include "base/Utf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace quillon::base {
namespace {

using namespace std::string_literals;

const std::string kBad = "\xEF\xBF\xBD";
const std::string kFourOfThreeBytes = "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF";

TEST(Utf, ConvertsBothWaysAtEveryBoundaryOfLength) {
    const std::tuple<const char*, std::string, std::wstring> cases[] = {
        {"empty", "", L""},
        {"embedded zero", "a\0b"s, L"a\0b"s},
        {"last of one byte, first of two", "\x7F\xC2\x80", L"\x7F\x80"},
        {"last of two bytes, first of three", "\xDF\xBF\xE0\xA0\x80", {0x7FF, 0x800}},
        {"around the surrogates", "\xED\x9F\xBF\xEE\x80\x80", {0xD7FF, 0xE000}},
        {"last of three bytes", "\xEF\xBF\xBF", {0xFFFF}},
        {"first and last pair", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", {0xD800, 0xDC00, 0xDBFF, 0xDFFF}},
    };
    for (const auto& [what, narrow, wide] : cases) {
        EXPECT_EQ(Utf8ToWide(narrow), wide) << what;
        EXPECT_EQ(WideToUtf8(wide), narrow) << what;
        EXPECT_EQ(RepairUtf8(narrow), narrow) << what;
    }
}

/// One character at a time, without blocks.
std::optional<std::u16string> DecodePlainly(std::string_view text) {
    std::u16string units;
    while (!text.empty()) {
        const std::size_t size = std::min<std::size_t>(text.size(), text[0] >= 0            ? 1
                                                                    : (text[0] & 0x20) == 0 ? 2
                                                                    : (text[0] & 0x10) == 0 ? 3
                                                                                            : 4);
        const auto one = Utf8ToUtf16(text.substr(0, size));
        if (!one) return std::nullopt;
        units += *one;
        text.remove_prefix(size);
    }
    return units;
}

// Texts are converted by vectors: every length and alignment, runs and mixtures of characters of every size,
// some of them damaged.
TEST(Utf, VectorsAgreeWithSingleCharacters) {
    std::mt19937 random(19);
    const std::string pieces[] = {"a", "longer than a vector of bytes", "\xC3\xA9", kFourOfThreeBytes,
                                  "\xF0\x9F\x98\x80"};
    for (std::size_t round = 0; round < 3'000; ++round) {
        const std::size_t start = round % 32, size = round % 3 == 0 ? 2'000 + random() % 4'200 : round % 101;
        std::string text(start + (round % 2) * (size / 2), 'x');
        while (text.size() < start + size) text += pieces[random() % 5];
        if (random() % 3 == 0 && text.size() > start)
            text[start + random() % (text.size() - start)] = static_cast<char>(random());
        const auto part = std::string_view(text).substr(start);
        const auto units = DecodePlainly(part);
        const auto wide = Utf8ToWide(part);
        ASSERT_EQ(Utf8ToUtf16(part), units);
        ASSERT_EQ(wide.has_value(), units.has_value());
        if (!units) continue;
        ASSERT_TRUE(std::equal(wide->begin(), wide->end(), units->begin(), units->end()));
        ASSERT_EQ(Utf16ToUtf8(*units), part);
        ASSERT_EQ(WideToUtf8(*wide), part);
    }
}

// Characters of three bytes go by fours: none of them may be something else.
TEST(Utf, FindsWhatIsInvalidInARunOfThreeBytes) {
    const std::u16string run(11, u'\u4E2D');
    for (std::size_t at = 0; at < run.size(); ++at) {
        for (const char* bad :
             {"\xE0\x9F\xBF", "\xED\xA0\x80", "\xE4\xB8\x2D", "\xE4\xF8\xAD", "\xF4\xB8\xAD"}) {
            std::string text = *Utf16ToUtf8(run);
            text.replace(3 * at, 3, bad);
            EXPECT_EQ(Utf8ToUtf16(text), std::nullopt) << at << bad;
            EXPECT_EQ(Utf8ToWide(text), std::nullopt) << at << bad;
        }
        for (const char16_t bad : {u'\xD800', u'\xDFFF'}) {
            std::u16string units = run;
            units[at] = bad;
            EXPECT_EQ(Utf16ToUtf8(units), std::nullopt) << at;
            EXPECT_EQ(WideToUtf8(std::wstring(units.begin(), units.end())), std::nullopt) << at;
        }
        if constexpr (sizeof(wchar_t) == 4) {
            std::wstring wide(run.begin(), run.end());
            wide[at] = static_cast<wchar_t>(0x14E2D);
            EXPECT_EQ(WideToUtf8(wide), std::nullopt) << at;
        }
    }
}

TEST(Utf, RejectsAndRepairsInvalidUtf8) {
    const std::tuple<const char*, std::string, std::size_t, std::string> cases[] = {
        {"stray continuation", "a\x80z", 1, "a" + kBad + "z"},
        {"never a lead byte", "\xC0\x80\xC1\xF5\xFF", 0, kBad + kBad + kBad + kBad + kBad},
        {"overlong of three", "\xE0\x9F\xBF", 0, kBad + kBad + kBad},
        {"overlong of four", "\xF0\x8F\xBF\xBF", 0, kBad + kBad + kBad + kBad},
        {"surrogate", "\xED\xA0\x80", 0, kBad + kBad + kBad},
        {"past the last character", "\xF4\x90\x80\x80", 0, kBad + kBad + kBad + kBad},
        {"cut at the end", "ok\xE2\x82", 2, "ok" + kBad},
        {"cut by another character", "\xF0\x9F\x98Z", 0, kBad + "Z"},
        {"cut by a lead byte", "\xE2\xC3\xA9", 0, kBad + "\xC3\xA9"},
        {"after a block", std::string(40, 'x') + "\xFF", 40, std::string(40, 'x') + kBad},
    };
    for (const auto& [what, text, invalidAt, repaired] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(Utf8ToWide(text), std::nullopt);
        EXPECT_EQ(Utf8ToUtf16Bytes(text, false), std::nullopt);
        EXPECT_EQ(FindInvalidUtf8(text), invalidAt);
        EXPECT_EQ(RepairUtf8(text), repaired);
        EXPECT_EQ(ToUtf8(ToWide(text)), repaired);
    }
}

TEST(Utf, RejectsAndRepairsLoneSurrogates) {
    const std::tuple<const char*, std::wstring, std::string> cases[] = {
        {"high at the end", {L'a', 0xD800}, "a" + kBad},
        {"low alone", {0xDC00, L'z'}, kBad + "z"},
        {"wrong order", {0xDC00, 0xD800}, kBad + kBad},
        {"high before a pair", {0xD83D, 0xD83D, 0xDE00}, kBad + "\xF0\x9F\x98\x80"},
        {"after a block", std::wstring(20, L'x') + std::wstring{0xDBFF}, std::string(20, 'x') + kBad},
    };
    for (const auto& [what, text, repaired] : cases) {
        EXPECT_EQ(WideToUtf8(text), std::nullopt) << what;
        EXPECT_EQ(ToUtf8(text), repaired) << what;
    }
}

}  // namespace
}  // namespace quillon::base
