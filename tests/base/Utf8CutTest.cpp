#include "base/Utf8Cut.h"

#include <gtest/gtest.h>

#include <string>

namespace quillon {

TEST(CutUtf8, KeepsWhatFitsAndNoPartOfACharacter) {
    const std::string noCharacters(9, '\x80');
    const struct {
        std::string_view text;
        std::size_t most;
        std::string_view expected;
    } cases[] = {
        {"abc", 3, "abc"},
        {"abcd", 3, "abc"},
        {"", 0, ""},
        {"a\xC3\xA9", 2, "a"},
        {"a\xC3\xA9z", 3, "a\xC3\xA9"},
        {"a\xF0\x9F\x8D\xB5", 4, "a"},
        {"\xE4\xB8\xAD", 2, ""},
        {"\xE4\xB8\xAD", 0, ""},
        {noCharacters, 7, std::string_view(noCharacters).substr(0, 7)},
        {noCharacters, 2, std::string_view(noCharacters).substr(0, 2)},
    };
    for (const auto& c : cases)
        EXPECT_EQ(base::CutUtf8(c.text, c.most), c.expected) << c.text << ' ' << c.most;
}

}  // namespace quillon
