#include "content/RemoteName.h"

#include <gmock/gmock.h>

#include "support/RecordingLogger.h"

namespace quillon::test {

TEST(RemoteName, AreTakenOnlyWhenTheyAreThoseOfAPlainFileOnBothSystems) {
    const RecordingLogger log;
    const std::string longest(255, 'n'), tooLong(256, 'n');
    for (const std::string name :
         {"a", "sub\\b.bin", "a/b\\c", "..a", "a..b", ".hidden", "a b", "com", "com10", "console", "nula.txt",
          "\xC3\xA9", "COM\xC2\xB4", longest.c_str()})
        EXPECT_STREQ(agent::ReadRemoteName(name).fault, "") << name;
    EXPECT_THAT(agent::ReadRemoteName("a/b\\c").components, testing::ElementsAre("a", "b", "c"));
    const std::pair<const char*, std::vector<std::string>> refused[] = {
        {"empty components", {"", "a\\", "a\\\\b"}},
        {"steps", {".", "..", "..\\a", "a\\..\\b", "a/../../b", "a\\."}},
        {"rooted", {"\\a", "/etc/a", "C:\\a", "C:a"}},
        {"servers and devices", {"\\\\server\\share\\a", "//server/a", "\\\\?\\C:\\a", "\\??\\C:\\a"}},
        {"streams", {"a:stream", "a::$DATA"}},
        {"device names", {"CON", "nul.txt", "sub\\Aux", "COM1", "lpt9.a.b", "nul .txt", "PRN\\a", "CLOCK$"}},
        {"more device names", {"COM\xC2\xB9", "com\xC2\xB2.x", "LPT\xC2\xB3", "CONIN$", "conout$.x"}},
        {"ends that Windows drops", {"a.", "a ", "...", "sub.\\a", "sub \\a"}},
        {"characters", {"a\tb", "a\nb", "a\x7F", "a*", "a?b", "a<b", "a>b", "a|b"}},
        {"no UTF-8", {"\xFF", "a\xC3", "\xC0\xAE\xC0\xAE\\a", "\xED\xA0\x80"}},
        {"too long", {tooLong}},
    };
    for (const auto& [what, names] : refused) {
        SCOPED_TRACE(what);
        for (const std::string& name : names) EXPECT_STRNE(agent::ReadRemoteName(name).fault, "") << name;
    }
    EXPECT_STRNE(agent::ReadRemoteName(std::string("a\0b", 3)).fault, "");
    std::string deep = "a";
    while (deep.size() <= 2048) deep += "\\a";
    EXPECT_STREQ(agent::ReadRemoteName(deep).fault, "is too long");
}

}  // namespace quillon::test
