#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using test::RecordingLogger;
using test::TempDir;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

void MakeReadOnly(const fs::path& file) {
    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
}

void MakeWritable(const fs::path& file) {
    fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);
}

TEST(FileSystemUtilsEraseFile, FailureIsLoggedUnlessQuiet) {
    const TempDir dir;
    const std::string missing = dir.Path("missing%s");
    const RecordingLogger log;
    EXPECT_FALSE(FileSystemUtils::EraseFile(missing, true));
    EXPECT_THAT(log.Lines(), IsEmpty());
    EXPECT_FALSE(FileSystemUtils::EraseFile(missing, false));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                ElementsAre(StartsWith("Cannot delete '" + missing + "' because: ")));
    EXPECT_FALSE(FileSystemUtils::EraseFile(dir.Path(), true));
    EXPECT_TRUE(FileSystemUtils::EraseFile(dir.Write("a.txt", "x"), false));
    EXPECT_FALSE(dir.Exists("a.txt"));
}

TEST(FileSystemUtilsEraseDirectory, DeletesTheTree) {
    const TempDir dir;
    dir.Write("tree/a.txt", "x");
    dir.Write("tree/one/b.txt", "x");
    fs::create_directories(dir.Native("tree/two/empty"));
    EXPECT_TRUE(FileSystemUtils::EraseDirectory(dir.Path("tree")));
    EXPECT_FALSE(dir.Exists("tree"));
    EXPECT_FALSE(FileSystemUtils::EraseDirectory(dir.Path("tree")));
    EXPECT_FALSE(FileSystemUtils::EraseDirectory(""));
    EXPECT_FALSE(FileSystemUtils::EraseDirectory(dir.Write("file", "x")));
    EXPECT_TRUE(dir.Exists("file"));
}

TEST(FileSystemUtilsEraseDirectory, ReadOnlyFileStopsIt) {
    const TempDir dir;
    const std::string file = dir.Write("tree/sub/locked.txt", "x");
    dir.Write("tree/sub/next/later.txt", "x");
    MakeReadOnly(dir.Native("tree/sub/locked.txt"));
    const RecordingLogger log;
    EXPECT_FALSE(FileSystemUtils::EraseDirectory(dir.Path("tree")));
    EXPECT_THAT(log.Lines(), ElementsAre(StartsWith("Cannot delete '" + file + "' because: ")));
    EXPECT_TRUE(dir.Exists("tree/sub/next/later.txt"));
    MakeWritable(dir.Native("tree/sub/locked.txt"));
}

TEST(FileSystemUtilsEraseDirectory, LinksAreRemovedAndNeverFollowed) {
    const TempDir dir;
    dir.Write("outside/precious.txt", "x");
    dir.Write("tree/a.txt", "x");
    std::error_code error;
    fs::create_directory_symlink(dir.Native("outside"), dir.Native("tree/sub"), error);
    if (error || !dir.Exists("tree/sub")) GTEST_SKIP() << "no links here";
    fs::create_symlink(dir.Native("outside/precious.txt"), dir.Native("tree/file"));
    fs::create_symlink(dir.Native("nowhere"), dir.Native("tree/dangling"));
    EXPECT_TRUE(FileSystemUtils::EraseDirectory(dir.Path("tree")));
    EXPECT_FALSE(dir.Exists("tree"));
    fs::create_directory_symlink(dir.Native("outside"), dir.Native("start"));
    EXPECT_TRUE(FileSystemUtils::EraseDirectory(dir.Path("start") + "\\"));
    EXPECT_FALSE(dir.Exists("start"));
    EXPECT_EQ(dir.Read("outside/precious.txt"), "x");
}

TEST(FileSystemUtilsEraseDirectory, DeepTreeNeedsNoStack) {
    if (test::kWindows) GTEST_SKIP() << "the classic path limit ends trees before they are deep";
    const TempDir dir;
    const fs::path memory = "/dev/shm";  // thousands of folders are slow to make on a disk
    const fs::path tree = (fs::is_directory(memory) ? memory : dir.Native()) / dir.Native().filename();
    const fs::path before = fs::current_path();
    fs::create_directory(tree);
    fs::current_path(tree);
    for (int depth = 0; depth < 10'000; ++depth) {
        fs::create_directory("step");
        fs::current_path("step");
    }
    fs::current_path(before);
    std::vector<std::string> files;
    EXPECT_TRUE(FileSystemUtils::GetAllFilesWithin(test::ToLibraryPath(tree), files));
    EXPECT_TRUE(FileSystemUtils::EraseDirectory(test::ToLibraryPath(tree)));
    EXPECT_FALSE(fs::exists(tree));
}

TEST(FileSystemUtilsEraseDirectory, FolderSwappedForALinkDuringTheWalkIsNotFollowed) {
    const TempDir dir;
    dir.Write("outside/precious.txt", "x");
    std::error_code error;
    fs::create_directory_symlink(dir.Native("outside"), dir.Native("link"), error);
    if (error || !dir.Exists("link")) GTEST_SKIP() << "no links here";
    for (int round = 0; round < 50; ++round) {
        for (int i = 0; i < 20; ++i) dir.Write("tree/sub/" + std::to_string(i), "x");
        std::thread attacker([&] {
            std::error_code ignored;
            fs::rename(dir.Native("tree/sub"), dir.Native("moved"), ignored);
            fs::create_directory_symlink(dir.Native("outside"), dir.Native("tree/sub"), ignored);
        });
        FileSystemUtils::EraseDirectory(dir.Path("tree"));
        attacker.join();
        EXPECT_EQ(dir.Read("outside/precious.txt"), "x");
        fs::remove_all(dir.Native("moved"));
        fs::remove_all(dir.Native("tree"));
    }
}

TEST(FileSystemUtilsMakeDirectories, MakesAncestorsOnly) {
    const TempDir dir;
    EXPECT_TRUE(FileSystemUtils::MakeDirectories(dir.Path("x\\y\\z")));
    EXPECT_TRUE(dir.Exists("x/y"));
    EXPECT_FALSE(dir.Exists("x/y/z"));
    EXPECT_TRUE(FileSystemUtils::MakeDirectory(dir.Path("x\\y\\z")));
    EXPECT_FALSE(FileSystemUtils::MakeDirectory(dir.Path("x\\y\\z")));
    EXPECT_TRUE(FileSystemUtils::MakeDirectories("no ancestors"));
    const std::string file = dir.Write("file", "x");
    EXPECT_FALSE(FileSystemUtils::MakeDirectories(file + "\\sub\\x"));
}

TEST(FileSystemUtilsMakeDirectory, LeavesThePathLimitToTheSystem) {
    const TempDir dir;
    std::string base = dir.Path();
    while (base.size() < 150) {
        base += "\\" + std::string(40, 'p');
        ASSERT_TRUE(FileSystemUtils::MakeDirectory(base));
    }
    for (const std::size_t length : {247U, 248U, 259U, 260U, 261U}) {
        SCOPED_TRACE(length);
        const std::string path = base + "\\" + std::string(length - base.size() - 1, 'n');
        const bool isMade = FileSystemUtils::MakeDirectory(path);
        const bool mustBe = length == 247 || !test::kWindows;  // past it a setting decides there
        EXPECT_TRUE(isMade || !mustBe);
        EXPECT_EQ(FileSystemUtils::Exists(path), isMade);
        EXPECT_EQ(FileSystemUtils::IsDirectory(path), isMade);
        EXPECT_EQ(FileSystemUtils::EraseDirectory(path), isMade);
    }
}

TEST(FileSystemUtilsRenameFile, ReplacesOnlyWhenTold) {
    const TempDir dir;
    const std::string a = dir.Write("a", "new");
    const std::string b = dir.Write("b", "old");
    EXPECT_FALSE(FileSystemUtils::RenameFile(a, b, false));
    EXPECT_EQ(dir.Read("a") + dir.Read("b"), "newold");
    EXPECT_TRUE(FileSystemUtils::RenameFile(a, b, true));
    EXPECT_EQ(dir.Read("b"), "new");
    EXPECT_FALSE(dir.Exists("a"));
    dir.Write("folder/x", "x");
    EXPECT_TRUE(FileSystemUtils::RenameFile(b, dir.Path("folder"), true));
    EXPECT_EQ(dir.Read("folder"), "new");
    errno = 0;
    EXPECT_FALSE(FileSystemUtils::RenameFile(a, b, false));
    EXPECT_EQ(errno, 2);
}

TEST(FileSystemUtilsRenameGenerations, ShiftsAndDropsTheOldest) {
    const TempDir dir;
    const std::string path = dir.Write("log.txt", "0");
    for (const char* n : {"1", "2", "3"}) dir.Write(std::string("log.txt.") + n, n);
    EXPECT_TRUE(FileSystemUtils::RenameGenerations(path, 3));
    EXPECT_FALSE(dir.Exists("log.txt"));
    EXPECT_EQ(dir.Read("log.txt.1") + dir.Read("log.txt.2") + dir.Read("log.txt.3"), "012");
    EXPECT_FALSE(dir.Exists("log.txt.4"));
    EXPECT_TRUE(FileSystemUtils::RenameGenerations(path, 3));  // nothing to shift
    EXPECT_EQ(dir.Read("log.txt.1"), "0");
    EXPECT_FALSE(dir.Exists("log.txt.3"));
}

TEST(FileSystemUtilsRenameGenerations, ZeroIsRefused) {
    const TempDir dir;
    const std::string path = dir.Write("log.txt", "0");
    const RecordingLogger log;
    EXPECT_FALSE(FileSystemUtils::RenameGenerations(path, 0));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                ElementsAre("Number of generations when renaming '" + path + "' must be at least 1"));
    EXPECT_EQ(dir.Read("log.txt"), "0");
}

TEST(FileSystemUtilsCopy, ReplacesTheTarget) {
    const TempDir dir;
    const std::string content(300'000, 'c');
    const std::string a = dir.Write("a", content);
    const std::string b = dir.Write("b", "longer" + content);
    EXPECT_TRUE(FileSystemUtils::DuplicateFile(a, b));
    EXPECT_EQ(dir.Read("b"), content);
    EXPECT_FALSE(FileSystemUtils::DuplicateFile(a, a));
    EXPECT_EQ(dir.Read("a"), content);
    EXPECT_FALSE(FileSystemUtils::DuplicateFile(dir.Path("missing"), b));
    EXPECT_EQ(dir.Read("b"), content);
    MakeReadOnly(dir.Native("b"));
    const bool isCopied = FileSystemUtils::DuplicateFile(a, b);
    MakeWritable(dir.Native("b"));
    EXPECT_TRUE(!isCopied || test::kWindows);  // an emulated Windows run by root lets it pass
}

TEST(FileSystemUtilsCopy, FailureToCopyThrowsAndAMissingSourceDoesNot) {
    const TempDir dir;
    const std::string source = dir.Write("a", "x");
    EXPECT_FALSE(FileSystemUtils::FileCopy(dir.Path("missing"), dir.Path("b")));
    try {
        FileSystemUtils::FileCopy(source, dir.Path("no\\such\\folder\\b"));
        ADD_FAILURE() << "must throw";
    } catch (const fs::filesystem_error& error) {
        EXPECT_STREQ(error.what(), "copy(p1, p2): invalid arguments");
    }
    FileSystemUtils::FileCopy(source, dir.Path("b"));  // its result depends on the privileges
    EXPECT_EQ(dir.Read("b"), "x");
}

TEST(FileSystemUtilsPrivilege, UnknownOneIsRefused) {
    EXPECT_FALSE(FileSystemUtils::SetProcessPrivilege(L"SeNoSuchPrivilege", true));
    EXPECT_FALSE(FileSystemUtils::SetProcessPrivilege(L"", true));
}

TEST(FileSystemUtilsSecureFile, LeavesTheFileToItsUser) {
    const TempDir dir;
    const std::string file = dir.Write("a", "x");
    EXPECT_TRUE(FileSystemUtils::SecureFile(file));
    EXPECT_FALSE(FileSystemUtils::SecureFile(dir.Path("missing")));
    EXPECT_EQ(FileSystemUtils::ReadContentsOfFile(file), "x");
    if (test::kWindows) GTEST_SKIP() << "the C++ library shows no access lists";
    const auto others = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(fs::status(dir.Native("a")).permissions() & others, fs::perms::none);
}

TEST(FileSystemUtilsTemporary, FilesAreNewEmptyAndDifferentOnEveryThread) {
    std::vector<std::string> paths(16);
    std::vector<std::thread> threads;
    for (std::string& path : paths) {
        threads.emplace_back([&path] { path = FileSystemUtils::GetTemporaryFile(); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::set<std::string>(paths.begin(), paths.end()).size(), paths.size());
    for (const std::string& path : paths) {
        EXPECT_THAT(path, StartsWith(FileSystemUtils::GetSystemTempPath() + "vnt"));
        EXPECT_THAT(path, testing::EndsWith(".tmp"));
        EXPECT_TRUE(fs::is_regular_file(test::ToNative(path)));
        EXPECT_TRUE(fs::is_empty(test::ToNative(path)));
        EXPECT_TRUE(FileSystemUtils::EraseFile(path, false));
    }
    const std::string folder = FileSystemUtils::GetTemporaryDirectory();
    EXPECT_TRUE(FileSystemUtils::IsDirectory(folder));
    EXPECT_TRUE(FileSystemUtils::EraseDirectory(folder));
}

}  // namespace
}  // namespace quillon
