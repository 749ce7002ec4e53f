#include <gmock/gmock.h>

#include <atomic>
#include <cerrno>
#include <fstream>
#include <set>

#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/TemporaryFile.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using FS = FileSystemUtils;
using FileSystemChangesTest = test::TempDirTest;
using test::RecordingLogger;
using testing::ElementsAre;
using testing::StartsWith;

TEST_F(FileSystemChangesTest, FailureToEraseAFileIsLoggedUnlessQuiet) {
    const std::string missing = dir.Path("missing%s");
    const RecordingLogger log;
    EXPECT_FALSE(FS::EraseFile(missing, true));
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_FALSE(FS::EraseFile(missing, false));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                ElementsAre(StartsWith("Cannot delete '" + missing + "' because: ")));
    EXPECT_TRUE(FS::EraseFile(dir.Write("a.txt", "x"), false));
    EXPECT_FALSE(dir.Exists("a.txt"));
}

TEST_F(FileSystemChangesTest, ReadOnlyFileStopsEraseDirectory) {
    const std::string file = dir.Write("tree/sub/locked.txt", "x");
    dir.Write("tree/sub/next/later.txt", "x");
    dir.SetReadOnly("tree/sub/locked.txt", true);
    const RecordingLogger log;
    EXPECT_FALSE(FS::EraseDirectory(dir.Path("tree")));
    EXPECT_THAT(log.Lines(), ElementsAre(StartsWith("Cannot delete '" + file + "' because: ")));
    EXPECT_TRUE(dir.Exists("tree/sub/next/later.txt"));
    dir.SetReadOnly("tree/sub/locked.txt", false);
}

TEST_F(FileSystemChangesTest, LinksAreErasedAndNeverFollowed) {
    dir.Write("outside/precious.txt", "x");
    fs::create_directory(dir.Native("tree"));
    std::error_code error;
    fs::create_directory_symlink(dir.Native("outside"), dir.Native("tree/sub"), error);
    if (error || !dir.Exists("tree/sub")) GTEST_SKIP() << "no links here";
    fs::create_symlink(dir.Native("outside/precious.txt"), dir.Native("tree/file"));
    fs::create_symlink(dir.Native("nowhere"), dir.Native("tree/dangling"));
    EXPECT_TRUE(FS::EraseDirectory(dir.Path("tree")));
    EXPECT_FALSE(dir.Exists("tree"));
    fs::create_directory_symlink(dir.Native("outside"), dir.Native("start"));
    EXPECT_TRUE(FS::EraseDirectory(dir.Path("start") + "\\"));
    EXPECT_FALSE(dir.Exists("start"));
    EXPECT_EQ(dir.Read("outside/precious.txt"), "x");
}

TEST_F(FileSystemChangesTest, DeepTreeNeedsNoStack) {
    if (test::kWindows) GTEST_SKIP() << "the classic path limit ends trees before they are deep";
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
    EXPECT_TRUE(FS::GetAllFilesWithin(test::ToLibraryPath(tree), files));
    EXPECT_TRUE(FS::EraseDirectory(test::ToLibraryPath(tree)));
    EXPECT_FALSE(fs::exists(tree));
}

TEST_F(FileSystemChangesTest, TreesGoOnPastTheLongestPath) {
    const std::string prefix = test::kWindows ? R"(\\?\)" : "";
    fs::path folder = prefix + dir.Native("tree").string();
    for (int depth = 0; depth < 40; ++depth, folder /= "step-of-ten")
        ASSERT_TRUE(fs::create_directory(folder));
    std::ofstream(folder.parent_path() / "file") << "12345";
    EXPECT_EQ(FS::GetDirectorySizeInBytes(dir.Path("tree"), true), 5u);
    std::vector<std::string> files;
    EXPECT_TRUE(FS::GetAllFilesWithin(dir.Path("tree"), files));
    ASSERT_EQ(files.size(), 1u);
    EXPECT_GT(files[0].size(), 260u);
    EXPECT_TRUE(files[0].starts_with(dir.Path("tree"))) << files[0];
    if (test::kWindows) {
        fs::remove(folder.parent_path() / "file");
        for (int depth = 0; depth < 40; ++depth) fs::remove(folder = folder.parent_path());
        GTEST_SKIP() << "the emulator does not tell where a file of so long a path is, which erasing asks";
    }
    EXPECT_TRUE(FS::EraseDirectory(dir.Path("tree")));
    EXPECT_FALSE(dir.Exists("tree"));
}

TEST_F(FileSystemChangesTest, MakeDirectoriesMakesAncestorsOnly) {
    EXPECT_TRUE(FS::MakeDirectories(dir.Path("x\\y\\z")));
    EXPECT_FALSE(dir.Exists("x/y/z"));
    EXPECT_TRUE(FS::MakeDirectory(dir.Path("x\\y\\z")));
    EXPECT_TRUE(FS::MakeDirectories("no ancestors"));
    EXPECT_FALSE(FS::MakeDirectories(dir.Write("file", "x") + "\\sub\\x"));
}

TEST_F(FileSystemChangesTest, ADirectoryIsMadeInTheRootOfAVolume) {
    if (!test::kWindows) GTEST_SKIP() << "only root may write there";
    const std::string folder = dir.Path();
    const std::string root = R"(\\?\)" + folder.substr(0, 2) + '\\' + PathUtils::FileName(folder) + "-root";
    EXPECT_TRUE(FS::MakeDirectory(root + "\\a\\b"));
    EXPECT_TRUE(FS::IsDirectory(root + "\\a\\b"));
    EXPECT_TRUE(FS::EraseDirectory(root));
}

TEST_F(FileSystemChangesTest, ThreadsMakeTheSameAncestors) {
    constexpr int kRounds = 200, kThreads = 4;
    std::atomic<int> made{0}, arrived{0};
    test::Threads(kThreads, [&](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            const std::string path = dir.Path(std::to_string(round) + "\\a\\b\\" + std::to_string(thread));
            for (++arrived; arrived < (round + 1) * kThreads;) std::this_thread::yield();
            made += FS::MakeDirectory(path) ? 1 : 0;
        }
    }).Join();
    EXPECT_EQ(made, kRounds * kThreads);
}

TEST_F(FileSystemChangesTest, PathLimitIsLeftToTheSystem) {
    std::string base = dir.Path();
    while (base.size() < 150) {
        base += "\\" + std::string(40, 'p');
        ASSERT_TRUE(FS::MakeDirectory(base));
    }
    for (const std::size_t length : {247U, 248U, 259U, 260U, 261U}) {
        SCOPED_TRACE(length);
        const std::string path = base + "\\" + std::string(length - base.size() - 1, 'n');
        // Past 247 characters for a folder and 259 for a file, a setting decides on Windows.
        const bool isMade = FS::MakeDirectory(path);
        EXPECT_TRUE(isMade || (test::kWindows && length > 247));
        EXPECT_EQ(FS::IsDirectory(path), isMade);
        EXPECT_EQ(FS::EraseDirectory(path), isMade);
        const bool isWritten = FS::WriteUtf8NoBomFile(path, "x");
        EXPECT_TRUE(isWritten || (test::kWindows && length > 259));
        EXPECT_EQ(FS::ReadContentsOfFile(path), isWritten ? "x" : "");
        EXPECT_EQ(FS::EraseFile(path, true), isWritten);
        const std::string error = StringUtils::GetLastErrorAsString();
        EXPECT_TRUE(isWritten || error.starts_with("(3/") || error.starts_with("(206/")) << error;
        EXPECT_FALSE(FS::Exists(path));
    }
}

TEST_F(FileSystemChangesTest, RenameReplacesOnlyWhenTold) {
    const std::string a = dir.Write("a", "new");
    const std::string b = dir.Write("b", "old");
    EXPECT_FALSE(FS::RenameFile(a, b, false));
    EXPECT_EQ(dir.Read("a") + dir.Read("b"), "newold");
    EXPECT_TRUE(FS::RenameFile(a, b, true));
    EXPECT_EQ(dir.Read("b"), "new");
    EXPECT_FALSE(dir.Exists("a"));
    dir.Write("folder/x", "x");
    EXPECT_TRUE(FS::RenameFile(b, dir.Path("folder"), true));
    EXPECT_EQ(dir.Read("folder"), "new");
    errno = 0;
    EXPECT_FALSE(FS::RenameFile(a, b, false));
    EXPECT_EQ(errno, 2);
}

TEST_F(FileSystemChangesTest, RenameThatCannotBeLosesNothing) {
    dir.Write("a", "a");
    dir.Write("b", "b");
    dir.Write("tree/sub/inner", "inner");
    const std::tuple<const char*, const char*, const char*, bool> cases[] = {
        {"itself", "a", "a", true},
        {"another spelling of itself", "a", "tree\\..\\a", true},
        {"a directory to itself", "tree", "tree", true},
        {"a missing source", "missing", "b", false},
        {"a missing source over a directory", "missing", "tree", false},
        {"over the directory that holds it", "tree\\sub\\inner", "tree", false},
        {"a directory over the one that holds it", "tree\\sub", "tree", false},
        {"a directory over what it holds", "tree", "tree\\sub", false},
        {"a directory over a file that it holds", "tree", "tree\\sub\\inner", false},
    };
    for (const auto& [what, from, to, isDone] : cases) {
        SCOPED_TRACE(what);
        errno = 0;
        EXPECT_EQ(FS::RenameFile(dir.Path(from), dir.Path(to), true), isDone);
        EXPECT_TRUE(isDone || errno != 0);
        EXPECT_EQ(dir.Read("a") + dir.Read("b") + dir.Read("tree/sub/inner"), "abinner");
    }
    const std::string before = FS::GetWorkingDirectory();
    ASSERT_TRUE(FS::SetWorkingDirectory(dir.Path("tree\\sub")));
    EXPECT_FALSE(FS::RenameFile("inner", "..", true));
    EXPECT_FALSE(FS::RenameFile("inner", dir.Path("tree") + "\\", true));
    ASSERT_TRUE(FS::SetWorkingDirectory(before));
    EXPECT_EQ(dir.Read("tree/sub/inner"), "inner");
}

// The emulator reports a rename to another spelling, and one to another name of the same file, as done and
// does nothing. What the system's own call does is therefore asked first.

TEST_F(FileSystemChangesTest, RenameChangesTheCaseOfANameOnly) {
    dir.Write("plain/OtHer", "x");
    fs::rename(dir.Native("plain/OtHer"), dir.Native("plain/other"));
    if (fs::directory_iterator(dir.Native("plain"))->path().filename() != "other") GTEST_SKIP() << "not here";
    fs::remove_all(dir.Native("plain"));
    dir.Write("CaSe", "x");
    EXPECT_TRUE(FS::RenameFile(dir.Path("CaSe"), dir.Path("case"), true));
    std::vector<std::string> names;
    EXPECT_TRUE(FS::GetImmediateFilesWithin(dir.Path(), names));
    EXPECT_THAT(names, ElementsAre("case"));
    EXPECT_EQ(dir.Read("case"), "x");
}

TEST_F(FileSystemChangesTest, RenameOfASecondNameLeavesOne) {
    dir.Write("a", "x");
    std::error_code refused;
    fs::create_hard_link(dir.Native("a"), dir.Native("b"), refused);
    if (refused) GTEST_SKIP() << "no second names here";
    dir.Write("plain/a", "x");
    fs::create_hard_link(dir.Native("plain/a"), dir.Native("plain/b"));
    fs::rename(dir.Native("plain/a"), dir.Native("plain/b"));
    if (test::kWindows && dir.Exists("plain/a")) GTEST_SKIP() << "not here";
    EXPECT_TRUE(FS::RenameFile(dir.Path("a"), dir.Path("b"), true));
    EXPECT_FALSE(dir.Exists("a"));
    EXPECT_EQ(dir.Read("b"), "x");
    // The name that the file has meanwhile must not be longer than the system takes.
    const std::string longest(255, 'l');
    fs::create_hard_link(dir.Native("b"), dir.Native(longest));
    EXPECT_TRUE(FS::RenameFile(dir.Path(longest), dir.Path("b"), true));
    EXPECT_FALSE(dir.Exists(longest));
    EXPECT_EQ(dir.Read("b"), "x");
}

TEST_F(FileSystemChangesTest, RenameOverALinkTakesItsPlace) {
    const std::string a = dir.Write("a", "new");
    dir.Write("real/inner", "x");
    std::error_code refused;
    fs::create_directory_symlink(dir.Native("real"), dir.Native("link"), refused);
    if (refused || !dir.Exists("link")) GTEST_SKIP() << "no links here";
    EXPECT_TRUE(FS::RenameFile(a, dir.Path("link"), true));
    EXPECT_EQ(dir.Read("link") + dir.Read("real/inner"), "newx");
    fs::create_symlink(dir.Native("real/inner"), dir.Native("link2"));
    EXPECT_TRUE(FS::RenameFile(dir.Path("link"), dir.Path("link2"), true));
    EXPECT_EQ(dir.Read("link2") + dir.Read("real/inner"), "newx");
}

TEST_F(FileSystemChangesTest, GenerationsAreShiftedAndTheOldestDropped) {
    const std::string path = dir.Write("log.txt", "0");
    for (const char* n : {"1", "2", "3"}) dir.Write(std::string("log.txt.") + n, n);
    EXPECT_TRUE(FS::RenameGenerations(path, 3));
    EXPECT_EQ(dir.Read("log.txt.1") + dir.Read("log.txt.2") + dir.Read("log.txt.3"), "012");
    EXPECT_FALSE(dir.Exists("log.txt.4"));
    EXPECT_TRUE(FS::RenameGenerations(path, 3));  // nothing to shift
    EXPECT_EQ(dir.Read("log.txt.1"), "0");
    EXPECT_FALSE(dir.Exists("log.txt.3"));
}

TEST_F(FileSystemChangesTest, DuplicateReplacesTheTarget) {
    const std::string content(300'000, 'c');
    const std::string a = dir.Write("a", content);
    const std::string b = dir.Write("b", "longer" + content);
    EXPECT_TRUE(FS::DuplicateFile(a, b));
    EXPECT_EQ(dir.Read("b"), content);
    EXPECT_FALSE(FS::DuplicateFile(dir.Path("missing"), b));
    EXPECT_EQ(dir.Read("b"), content);
}

TEST_F(FileSystemChangesTest, FailureToCopyThrows) {
    const std::string source = dir.Write("a", "x");
    EXPECT_THAT([&] { FS::FileCopy(source, dir.Path("no\\such\\folder\\b")); },
                testing::ThrowsMessage<fs::filesystem_error>("copy(p1, p2): invalid arguments"));
    FS::FileCopy(source, dir.Path("b"));  // its result depends on the privileges
    EXPECT_EQ(dir.Read("b"), "x");
}

TEST_F(FileSystemChangesTest, SecureFileLeavesTheFileToItsUser) {
    const std::string file = dir.Write("a", "x");
    EXPECT_TRUE(FS::SecureFile(file));
    EXPECT_EQ(FS::ReadContentsOfFile(file), "x");
    if (test::kWindows) GTEST_SKIP() << "the C++ library shows no access lists";
    const auto others = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(fs::status(dir.Native("a")).permissions() & others, fs::perms::none);
}

TEST_F(FileSystemChangesTest, TemporaryFilesAreNewEmptyAndDifferentOnEveryThread) {
    std::vector<std::string> paths(16);
    test::Threads(16, [&](int i) { paths[static_cast<std::size_t>(i)] = FS::GetTemporaryFile(); }).Join();
    EXPECT_EQ(std::set<std::string>(paths.begin(), paths.end()).size(), paths.size());
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        EXPECT_THAT(path, StartsWith(FS::GetSystemTempPath() + "vnt"));
        EXPECT_THAT(path, testing::EndsWith(".tmp"));
        EXPECT_TRUE(fs::is_empty(test::ToNative(path)));
        EXPECT_TRUE(FS::EraseFile(path, false));
    }
    EXPECT_TRUE(FS::EraseDirectory(FS::GetTemporaryDirectory()));
}

TEST_F(FileSystemChangesTest, TemporaryObjectsGoWithWhatTheyHold) {
    std::string file, directory, kept;
    {
        TemporaryFile first, second;
        TemporaryDirectory folder;
        file = first.Path();
        directory = folder.Path();
        EXPECT_TRUE(FS::WriteUtf8NoBomFile(directory + "\\sub.txt", "x"));
        second = std::move(first);
        EXPECT_EQ(second.Path(), file);
        kept = TemporaryFile().Release();
        EXPECT_TRUE(FS::Exists(file) && FS::IsDirectory(directory));
    }
    EXPECT_FALSE(FS::Exists(file) || FS::Exists(directory));
    EXPECT_TRUE(FS::EraseFile(kept, false));
}

TEST_F(FileSystemChangesTest, AtomicWriteReplacesTheContentOnly) {
    const std::string file = dir.Write("a", "old and longer");
    EXPECT_TRUE(FS::WriteFileAtomic(file, std::string_view("n\0w", 3)));
    EXPECT_EQ(dir.Read("a"), std::string("n\0w", 3));
    EXPECT_TRUE(FS::WriteFileAtomic(dir.Path("new"), ""));
    EXPECT_TRUE(dir.Exists("new"));
    EXPECT_FALSE(FS::WriteFileAtomic(dir.Path(), "x"));
    EXPECT_FALSE(FS::WriteFileAtomic(dir.Path("no\\directory"), "x"));
    dir.SetReadOnly("a", true);
    EXPECT_FALSE(FS::WriteFileAtomic(file, "x"));
    EXPECT_THAT(StringUtils::GetLastErrorAsString(), StartsWith("(5/"));
    dir.SetReadOnly("a", false);
    EXPECT_EQ(dir.Read("a"), std::string("n\0w", 3));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Native()), {}), 2);
}

}  // namespace
}  // namespace quillon
