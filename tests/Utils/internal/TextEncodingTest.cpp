#include "Utils/internal/TextEncoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
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

}  // namespace
}  // namespace quillon
