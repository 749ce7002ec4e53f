#include <gmock/gmock.h>

#include "common/TemporaryName.h"
#include "content/RemoteName.h"
#include "sql/DatabaseFolder.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "system/ContentFiles.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using agent::DestinationFolder;
using agent::NewFile;
using ContentFilesTest = TempDirTest;

}  // namespace

TEST_F(ContentFilesTest, LeftoversOfKilledDownloadsGoAndFilesInTheMakingStay) {
    const std::string left = "to/sub/.quillon-123-456.part",
                      library = "to/sub/.quillon-00ffaa0011223344.part";
    dir.Write(left, "x");
    dir.Write(library, "x");
    for (const char* const foreign :
         {"to/sub/.quillon-.part", "to/sub/.quillon-my.part", "to/sub/.quillon-1.txt"})
        dir.Write(foreign, "x");
    DestinationFolder first;
    ASSERT_EQ(first.Open(dir.Path("to")), "");
    std::unique_ptr<NewFile> held;
    ASSERT_EQ(first.Create({"sub", "held"}, held), "");
    EXPECT_FALSE(dir.Exists(left) || dir.Exists(library));

    DestinationFolder second;
    ASSERT_EQ(second.Open(dir.Path("to")), "");
    std::unique_ptr<NewFile> other;
    ASSERT_EQ(second.Create({"sub", "a"}, other), "");
    EXPECT_EQ(other->Commit(), "");
    other.reset();
    EXPECT_EQ(held->Write("held", 4), "");
    EXPECT_EQ(held->Commit(), "");
    held.reset();
    EXPECT_EQ(dir.Read("to/sub/held"), "held");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Native("to/sub")), {}), 5);
    EXPECT_TRUE(agent::IsTemporaryName(agent::MakeTemporaryName()));
}

TEST(RemoteNames, ThatDifferOnlyInCaseAreOneBeyondAsciiAsWell) {
    const std::pair<const char*, const char*> pairs[] = {{"A/b", "a\\B"},
                                                         {"\xC3\xA9", "\xC3\x89"},
                                                         {"\xD1\x8F.txt", "\xD0\xAF.TXT"},
                                                         {"\xCF\x89", "\xCE\xA9"}};
    for (const auto& [a, b] : pairs)
        EXPECT_EQ(KeyOf(agent::ReadRemoteName(a)), KeyOf(agent::ReadRemoteName(b))) << a;
    EXPECT_NE(KeyOf(agent::ReadRemoteName("\xC3\xA9")), KeyOf(agent::ReadRemoteName("e")));
}

TEST_F(ContentFilesTest, FolderOfDatabasesIsItsUsersAlone) {
    const agent::DatabaseFolder folder(dir.Path("new") + "\\stores\\");
    ASSERT_TRUE(folder.Make());
    EXPECT_TRUE(folder.Make());
    EXPECT_TRUE(dir.Exists("new/stores"));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Native("new")), {}), 1);
    if (kWindows) GTEST_SKIP() << "the C++ library shows no access lists";
    EXPECT_EQ(fs::status(dir.Native("new/stores")).permissions(), fs::perms::owner_all);
}

}  // namespace quillon::test
