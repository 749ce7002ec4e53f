#include "Utils/internal/TextEncoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

namespace quillon {
namespace {

bool IsFoundInPieces(std::string_view content, std::mt19937& random) {
    Utf8Finder finder;
    while (!content.empty()) {
        const std::size_t size = std::min<std::size_t>(1 + random() % 5, content.size());
        finder.Add(content.substr(0, size));
        content.remove_prefix(size);
    }
    return finder.HasFound();
}

TEST(Utf8Finder, FindsTheSameWhereverThePiecesAreCut) {
    const std::string pieces[] = {"a",    "plain text", "\xC3", "\xE2\x82", "\xF0\x9F\x98",
                                  "\xA9", "\x80",       "\xFF", "\xE2("};
    std::mt19937 random(20261125);
    int found = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::string content;
        for (auto count = random() % 8; count > 0; --count) content += pieces[random() % std::size(pieces)];
        Utf8Finder whole;
        whole.Add(content);
        ASSERT_EQ(IsFoundInPieces(content, random), whole.HasFound()) << testing::PrintToString(content);
        found += whole.HasFound();
    }
    EXPECT_GT(found, 1'000);
    EXPECT_LT(found, 19'000);
}

// The search in a stream takes one byte after the other.
TEST(Utf8Finder, FindsTheSameAsTheSearchInAStream) {
    const std::string bytes = "ab\x80\xA9\xBF\xC0\xC3\xC3\xDF\xE2\xEF\xF0\xF4\xF7\xF8\xFF";
    std::mt19937 random(20261125);
    int found = 0;
    constexpr int kTexts = 200'000;
    for (int i = 0; i < kTexts; ++i) {
        // Few continuation bytes, so that about half the texts have no sequence.
        std::string text;
        for (auto left = random() % 90; left > 0; --left) {
            const char byte = bytes[random() % bytes.size()];
            text += (byte & 0xC0) == 0x80 && random() % 8 != 0 ? 'c' : byte;
        }
        Utf8Finder finder;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t size = 1 + random() % (i % 2 == 0 ? 4 : 100);
            finder.Add(std::string_view(text).substr(at, size));
            at += size;
        }
        std::istringstream stream(text);
        FileSystemUtils::FileEncoding ignored = FileSystemUtils::NOTSET;
        const bool expected = FileSystemUtils::CheckForUTF8Sequences(stream, ignored);
        ASSERT_EQ(finder.HasFound(), expected) << i;
        found += expected ? 1 : 0;
    }
    EXPECT_GT(found, kTexts / 10);
    EXPECT_LT(found, kTexts * 9 / 10);
}

}  // namespace
}  // namespace quillon
