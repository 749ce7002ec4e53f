#include "base/InterpreterLine.h"

#include <gtest/gtest.h>

namespace quillon::base {

TEST(InterpreterLine, IsReadAsTheInterpreterDoes) {
    const auto isProgram = [](std::string_view path) { return path == "C:\\a b\\tool.exe"; };
    const std::tuple<const char*, std::string, std::optional<std::string>> cases[] = {
        {"a plain one", "cmd /c echo a b", "echo a b"},
        {"in any case and directory", "C:\\Windows\\System32\\CMD.EXE /C dir", "dir"},
        {"a quoted path", "\"C:\\Windows\\System32\\cmd.exe\" /c dir", "dir"},
        {"nothing between", "cmd/cdir", "dir"},
        {"other switches", "cmd /d /q /v:on /E:off /s /c dir", "dir"},
        {"switches in one", "cmd /d/c dir", "dir"},
        {"enclosing quotes go", "cmd /c \"echo a b\"", "echo a b"},
        {"a program's quotes stay", "cmd /c \"C:\\a b\\tool.exe\"", "\"C:\\a b\\tool.exe\""},
        {"but not after /s", "cmd /s /c \"C:\\a b\\tool.exe\"", "C:\\a b\\tool.exe"},
        {"the first and the last of four", "cmd /c \"\"x y\" \"z\"\"", "\"x y\" \"z\""},
        {"what follows the last one stays", "cmd /c \"a b\" c", "a b c"},
        {"special characters cost the quotes", "cmd /c \"a & b\"", "a & b"},
        {"quotes inside stay", "cmd /c echo \"a b\"", "echo \"a b\""},
        {"one quote", "cmd /c \"", ""},
        {"no script", "cmd", std::nullopt},
        {"one that stays", "cmd /k dir", std::nullopt},
        {"another program", "command /c dir", std::nullopt},
    };
    for (const auto& [what, line, script] : cases)
        EXPECT_EQ(InterpreterScript(line, isProgram), script) << what;
}

}  // namespace quillon::base
