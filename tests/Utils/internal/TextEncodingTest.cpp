#include "Utils/internal/TextEncoding.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

namespace quillon {
namespace {

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
