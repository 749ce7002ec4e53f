#include "base/CommandLine.h"

#include <gtest/gtest.h>

namespace quillon::base {
namespace {

using Arguments = std::vector<std::string>;

const struct {
    const char* what;
    std::string line;
    Arguments expected;
} kCases[] = {
    {"blanks between", "tool  a\t b ", {"tool", "a", "b"}},
    {"a blank first is an empty program", " a", {"", "a"}},
    {"quoted program", "\"C:\\my tools\\t\"x y", {"C:\\my tools\\t", "x", "y"}},
    {"a program's backslashes and later quotes mean nothing", "a\\\"b c", {"a\\\"b", "c"}},
    {"empty argument", "t \"\" x", {"t", "", "x"}},
    {"quotes inside a word", "t a\"b c\"d", {"t", "ab cd"}},
    {"unclosed argument", "t \"a b", {"t", "a b"}},
    {"backslashes before no quote", "t \\\\a\\b\\", {"t", "\\\\a\\b\\"}},
    {"odd backslashes", "t \"a\\\" b\"", {"t", "a\" b"}},
    {"three quotes are one, and close", "t \"\"\"a b\"", {"t", "\"a", "b"}},
    {"a doubled quote closes", "t \"a\"\"b c\"", {"t", "a\"b", "c"}},
    {"backslash, then quotes", "t \\\"\"\"a b", {"t", "\"a", "b"}},
};

TEST(CommandLine, IsCutByTheWindowsRules) {
    for (const auto& [what, line, expected] : kCases) EXPECT_EQ(SplitCommandLine(line), expected) << what;
    EXPECT_EQ(SplitCommandLine(""), Arguments());
    EXPECT_EQ(SplitCommandLine(std::string("t a\0b", 5)), (Arguments{"t", "a"}));
}

}  // namespace
}  // namespace quillon::base
