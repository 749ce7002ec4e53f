#include "quillon/CommandLineBuilder.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace quillon {
namespace {

TEST(CommandLineBuilder, QuotesOnlyWhatNeedsIt) {
    const struct {
        const char* what;
        std::string program;
        std::vector<std::string> arguments;
        std::string expected;
    } cases[] = {
        {"plain", "tool", {"-x", "C:\\dir\\"}, "tool -x C:\\dir\\"},
        {"program with blanks", "C:\\My Tools\\a.exe", {}, "\"C:\\My Tools\\a.exe\""},
        {"program ending in a backslash", "C:\\My Tools\\", {}, "\"C:\\My Tools\\\""},
        {"empty argument", "tool", {""}, "tool \"\""},
        {"blank and last backslashes", "tool", {"a b\\\\"}, "tool \"a b\\\\\\\\\""},
        {"quotes after backslashes", "tool", {"a\\\"b"}, "tool \"a\\\\\\\"b\""},
        {"backslashes before no quote", "tool", {"a\\\\b c"}, "tool \"a\\\\b c\""},
        {"line breaks", "tool", {"a\nb"}, "tool \"a\nb\""},
        {"UTF-8", "tool", {"\xC3\xA9"}, "tool \xC3\xA9"},
        {"batch file", "run.cmd", {"a b", "c=d"}, "run.cmd \"a b\" \"c=d\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CommandLineBuilder builder(c.program);
        for (const std::string& argument : c.arguments) builder.Add(argument);
        EXPECT_EQ(builder.Get(), c.expected);
    }
}

TEST(CommandLineBuilder, RefusesWhatNoQuotingCarries) {
    EXPECT_THROW(CommandLineBuilder("to\"ol"), std::invalid_argument);
    EXPECT_THROW(CommandLineBuilder(std::string("to\0ol", 5)), std::invalid_argument);
    CommandLineBuilder tool("tool.exe");
    EXPECT_THROW(tool.Add(std::string("a\0", 2)), std::invalid_argument);
    EXPECT_NO_THROW(tool.Add("100% \"&|<>^!"));
    EXPECT_EQ(tool.Get(), "tool.exe \"100% \\\"&|<>^!\"") << "a refused argument leaves nothing";

    for (const char* const batch : {"a.bat", "A.CMD", "a.bat. .", "C:\\x y\\a.Bat"}) {
        SCOPED_TRACE(batch);
        CommandLineBuilder builder(batch);
        for (const char* const argument :
             {"\"", "%PATH%", "a&b", "a|b", "a<b", "a>b", "^", "!", "a\nb", "\r"}) {
            EXPECT_THROW(builder.Add(argument), std::invalid_argument) << argument;
        }
    }
    EXPECT_THROW(CommandLineBuilder("%TEMP%\\a.bat"), std::invalid_argument);
    EXPECT_NO_THROW(CommandLineBuilder("a.bat.exe").Add("a&b"));
}

}  // namespace
}  // namespace quillon
