#include "quillon/CommandLineBuilder.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace quillon {
namespace {

TEST(CommandLineBuilder, QuotesOnlyWhatNeedsIt) {
    const std::tuple<const char*, std::string, std::vector<std::string>, std::string> cases[] = {
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
    for (const auto& [what, program, arguments, expected] : cases) {
        CommandLineBuilder builder(program);
        for (const std::string& argument : arguments) builder.Add(argument);
        EXPECT_EQ(builder.Get(), expected) << what;
    }
}

TEST(CommandLineBuilder, RefusesWhatNoQuotingCarries) {
    EXPECT_THROW(CommandLineBuilder("to\"ol"), std::invalid_argument);
    EXPECT_THROW(CommandLineBuilder(std::string("to\0ol", 5)), std::invalid_argument);
    CommandLineBuilder tool("tool.exe");
    EXPECT_THROW(tool.Add(std::string("a\0", 2)), std::invalid_argument);
    tool.Add("100% \"&|<>^!");
    EXPECT_EQ(tool.Get(), "tool.exe \"100% \\\"&|<>^!\"") << "a refused argument leaves nothing";

    for (const char* const batch : {"a.bat", "A.CMD", "a.bat. .", "C:\\x y\\a.Bat", "x/a.bat", "C:a.bat",
                                    "a.bat:stream", "a.bat\\", "a.bat/", "a.bat::$DATA", "x.d\\a.cmd ."}) {
        for (const char* const argument :
             {"\"", "%PATH%", "a&b", "a|b", "a<b", "a>b", "^", "!", "\n", "\r"}) {
            EXPECT_THROW(CommandLineBuilder(batch).Add(argument), std::invalid_argument) << batch << argument;
        }
    }
    EXPECT_THROW(CommandLineBuilder("%TEMP%\\a.bat"), std::invalid_argument);
    EXPECT_NO_THROW(CommandLineBuilder("a.bat.exe").Add("a&b"));
    EXPECT_NO_THROW(CommandLineBuilder("a.bat\\b.exe").Add("a&b"));
    // The system would run a.bat.
    for (const char* const path : {"a.bat\\.", "a.bat/.", "a.bat\\.\\.", "a.bat\\x\\..", "a.bat\\ .", "."})
        EXPECT_THROW(CommandLineBuilder{path}, std::invalid_argument) << path;
}

TEST(CommandLineBuilder, LetsNobodyIntoAScript) {
    for (const char* const shell :
         {"cmd", "CMD.exe", "C:\\Windows\\System32\\cmd.exe", "x/cmd.exe ", "x\\cmd.exe::$DATA"}) {
        for (const char* const scriptSwitch : {"/c", "/K", "/d/s/c", "/cdir"}) {
            CommandLineBuilder line(shell);
            line.Add("/d").Add(scriptSwitch).Add("type").Add("C:\\a b (x86)\\c.txt");
            for (const char* const text : {"\"", "%PATH%", "a&b", "a|b", "^", "\n", "$(x)", "`x`", "' '"})
                EXPECT_THROW(line.Add(text), std::invalid_argument) << shell << scriptSwitch << text;
        }
        EXPECT_THROW(CommandLineBuilder(shell).Add("/cecho&x"), std::invalid_argument) << shell;
    }
    EXPECT_NO_THROW(CommandLineBuilder("command").Add("/c").Add("a&b"));
}

}  // namespace
}  // namespace quillon
