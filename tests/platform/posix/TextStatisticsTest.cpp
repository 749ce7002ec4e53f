#include <gtest/gtest.h>

#include <random>

#include "platform/TextApi.h"

namespace quillon::platform {
namespace {

using namespace std::string_literals;

/// Letters of one script by their frequency, and the same in a code page.
struct Script {
    const char* what;
    std::string codePage;
    std::u16string letters;
};

const Script kScripts[] = {
    {"windows-1251", "\xEE\xE5\xE0\xE8\xED\xF2\xF1\xF0\xE2\xEB\xEA\xEC\xE4",
     u"\u043E\u0435\u0430\u0438\u043D\u0442\u0441\u0440\u0432\u043B\u043A\u043C\u0434"},
    {"windows-1251, capitals", "\xCE\xC5\xC0\xC8\xCD\xD2\xD1\xD0\xC2\xCB\xCA\xCC\xC4",
     u"\u041E\u0415\u0410\u0418\u041D\u0422\u0421\u0420\u0412\u041B\u041A\u041C\u0414"},
    {"koi8-r", "\xCF\xC5\xC1\xC9\xCE\xD4\xD3\xD2\xD7\xCC\xCB\xCD\xC4",
     u"\u043E\u0435\u0430\u0438\u043D\u0442\u0441\u0440\u0432\u043B\u043A\u043C\u0434"},
    {"cp866, capitals", "\x8E\x85\x80\x88\x8D\x92\x91\x90\x82\x8B\x8A\x8C\x84",
     u"\u041E\u0415\u0410\u0418\u041D\u0422\u0421\u0420\u0412\u041B\u041A\u041C\u0414"},
    {"windows-1253", "\xE1\xEF\xE9\xE5\xF3\xF4\xED\xF1\xF0\xEA\xF5\xEB\xEC",
     u"\u03B1\u03BF\u03B9\u03B5\u03C3\u03C4\u03BD\u03C1\u03C0\u03BA\u03C5\u03BB\u03BC"},
    {"windows-1252", "etaoinsr\xE9\xE8\xE0\xFC\xF6", u"etaoinsr\u00E9\u00E8\u00E0\u00FC\u00F6"},
};

std::string Le(const std::u16string& text) {
    std::string bytes;
    for (const char16_t unit : text) bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    return bytes;
}

/// Words between which `gap` stands; the code page and UTF-16 hold the same text.
struct Text {
    std::string narrow;
    std::u16string wide;
};

Text MakeText(const Script& script, char gap, std::size_t shortest, std::mt19937& random) {
    Text text;
    const std::size_t length = 4 + random() % 120;
    while (text.narrow.size() < length) {
        for (std::size_t left = shortest + random() % 7; left > 0; --left) {
            const std::size_t letter = random() % script.letters.size();
            text.narrow += script.codePage[letter];
            text.wide += script.letters[letter];
        }
        text.narrow += gap;
        text.wide += static_cast<char16_t>(gap);
    }
    return text;
}

TEST(TextStatistics, TellUtf16FromTheSameTextInACodePage) {
    std::mt19937 random(20261125);
    for (const Script& script : kScripts) {
        SCOPED_TRACE(script.what);
        for (int i = 0; i < 2'000; ++i) {
            const Text text = MakeText(script, ' ', 1, random);
            ASSERT_FALSE(LooksLikeUtf16(text.narrow)) << testing::PrintToString(text.narrow);
            ASSERT_TRUE(LooksLikeUtf16(Le(text.wide))) << testing::PrintToString(text.narrow);
        }
    }
}

TEST(TextStatistics, WordsBetweenNulsAreNoUtf16) {
    std::mt19937 random(20261125);
    for (const Script& script : kScripts) {
        SCOPED_TRACE(script.what);
        for (int i = 0; i < 500; ++i) {
            const Text text = MakeText(script, '\0', 3, random);
            ASSERT_FALSE(LooksLikeUtf16(text.narrow)) << testing::PrintToString(text.narrow);
        }
    }
}

TEST(TextStatistics, LookAtWhatTellsTheTwoApart) {
    std::string blanks;
    for (int i = 0; i < 100; ++i) {
        blanks += " \t\r\n\v\f"[i * 7 % 6];
    }
    std::u16string ideographs;
    for (char16_t i = 0; i < 60; ++i) {
        ideographs += static_cast<char16_t>(0x4E00 + i * 331 % 0x51A5);
    }
    const std::tuple<const char*, std::string, bool> cases[] = {
        {"nothing", "", false},
        {"one unit", "a\0"s, true},
        {"white space with form feeds", blanks, false},
        {"overstruck text", "N\bNA\bAM\bME\bE of a page, and its text", false},
        {"CR LF as one unit", "ab\r\ncd\r\n", false},
        {"a NUL unit", Le(u"text\0text"s), false},
        {"a lone surrogate", Le(u"text") + "\x00\xDC"s, false},
        {"Chinese", Le(ideographs), true},
        {"Japanese syllables", Le(u"\u3053\u3093\u306B\u3061\u306F\u30DB"), true},
        {"a drawn line", Le(u"\u2500\u2500\u2500 a heading\r\n"), true},
        {"a pair at the end of the sample", Le(std::u16string(65'535, u'a') + u"\xD83D\xDE00" + u"a"), true},
    };
    for (const auto& [what, bytes, expected] : cases) EXPECT_EQ(LooksLikeUtf16(bytes), expected) << what;
}

}  // namespace
}  // namespace quillon::platform
