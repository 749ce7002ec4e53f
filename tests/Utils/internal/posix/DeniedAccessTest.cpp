// For Linux only: under the emulator nothing is denied to anybody.
#include <gmock/gmock.h>
#include <unistd.h>

#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ProcessUtils.h"
#include "quillon/StringUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using FS = FileSystemUtils;

/// A folder that is root's alone, and a process that is somebody else's.
class DeniedAccess : public test::TempDirTest {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "needs root, to become somebody else";
        fs::permissions(dir.Native(), fs::perms::others_exec | fs::perms::others_read, fs::perm_options::add);
        file = dir.Write("denied/file.txt", "secret");
        fs::permissions(dir.Native("denied"), fs::perms::owner_all);
        ASSERT_EQ(seteuid(65534), 0);
    }
    void TearDown() override { ASSERT_EQ(seteuid(0), 0); }

    std::string file;
};

TEST_F(DeniedAccess, NothingInTheFolderIsReadListedOrChanged) {
    std::vector<std::string> names;
    FS::FileEncoding encoding = FS::NOTSET;
    EXPECT_FALSE(FS::Exists(file));
    EXPECT_EQ(FS::ReadFile(file, encoding, FS::NOTSET), "");
    EXPECT_FALSE(platform::ReadWholeFile(file));
    EXPECT_EQ(platform::LastError(), 5u);
    EXPECT_FALSE(FS::GetImmediateFilesWithin(dir.Path("denied"), names));
    EXPECT_EQ(FS::FindFiles(dir.Path("denied\\*"), &names), 0u);
    EXPECT_THAT(names, testing::IsEmpty());
    EXPECT_FALSE(FS::WriteUtf8File(dir.Path("denied\\new.txt"), "x"));
    EXPECT_FALSE(FS::MakeDirectory(dir.Path("denied\\new")));
    EXPECT_FALSE(FS::RenameFile(file, dir.Path("stolen.txt"), true));
    EXPECT_FALSE(FS::DuplicateFile(file, dir.Path("stolen.txt")));
    EXPECT_FALSE(FS::SecureFile(file));
    EXPECT_FALSE(dir.Exists("stolen.txt"));
}

TEST_F(DeniedAccess, ErasingSaysWhyAndLeavesEverything) {
    const test::RecordingLogger log;
    EXPECT_FALSE(FS::EraseDirectory(dir.Path("denied")));
    EXPECT_EQ(platform::LastError(), 5u);
    EXPECT_FALSE(FS::EraseFile(file, false));
    EXPECT_THAT(log.Lines(),
                testing::ElementsAre("Cannot delete '" + file + "' because: (5/0X5) Access is denied. "));
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(dir.Read("denied/file.txt"), "secret");
}

TEST_F(DeniedAccess, CommandInTheFolderIsNotStarted) {
    test::RecordingLogger log;
    const auto properties = test::CommandOf("true", log);
    properties->workingDirectory = StringUtils::NarrowStringToWide(dir.Path("denied"));
    EXPECT_EQ(ProcessUtils::RunCliCommand(properties), 1);
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                testing::ElementsAre(testing::StartsWith("Could not run command '")));
}

}  // namespace
}  // namespace quillon
