#include "system/LogFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "support/TempDir.h"

namespace quillon::test {

namespace fs = std::filesystem;

// The logger's own rule, which only root can try: others cannot give a link away.
TEST(LogFile, IsNotMadeThroughALinkOfAnotherAccount) {
    const TempDir dir;
    fs::create_symlink(dir.Native("made"), dir.Native("log"));
    fs::create_symlink(dir.Native("own"), dir.Native("link"));
    EXPECT_EQ(agent::FaultOfLogFile(dir.Path("link")), "");
    EXPECT_TRUE(fs::exists(dir.Native("own")));
    if (::lchown(dir.Native("log").c_str(), 65'534, 65'534) != 0)
        GTEST_SKIP() << "only root gives links away";
    EXPECT_EQ(agent::FaultOfLogFile(dir.Path("log")), "it is a link of another account");
    EXPECT_FALSE(fs::exists(dir.Native("made")));
}

}  // namespace quillon::test
