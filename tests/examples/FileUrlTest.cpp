#include "content/FileUrl.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quillon {

TEST(FileUrl, NameFilesOfThisMachineOnly) {
    const std::pair<std::string, std::string> cases[] = {
        {"file:///C:/a%20b/c", "C:\\a b\\c"},
        {"FILE://localhost/srv/a", "\\srv\\a"},
        {"file:///c:", "c:"},
        {"file:///", "\\"},
        {"file://server/a", ""},
        {"file:////server/a", ""},
        {"file:///%5Cserver/a", ""},
        {"file:///a%00b", ""},
        {"file:///a?b", ""},
        {"file:///a#b", ""},
        {"file:a", ""},
        {"http://localhost/a", ""},
        {"C:\\a", ""},
        {"", ""},
    };
    for (const auto& [url, path] : cases) EXPECT_EQ(agent::PathOfFileUrl(url), path) << url;
}

}  // namespace quillon
