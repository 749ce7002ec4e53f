#include "quillon/FileSystemUtils.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

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
using testing::UnorderedElementsAre;

std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

/// Makes a link to a folder; false where the system or the user may not.
bool LinkFolder(const fs::path& target, const fs::path& link) {
    std::error_code error;
    fs::create_directory_symlink(target, link, error);
    return !error && fs::is_symlink(fs::symlink_status(link));
}

TEST(FileSystemUtilsTests, TellFilesFromFoldersAndNothing) {
    const TempDir dir;
    const std::string file = dir.Write("folder/a.txt", "12345");
    const std::string folder = dir.Path("folder");
    const std::string missing = dir.Path("missing");
    const struct {
        std::string path;
        bool exists, isDirectory;
        std::uint64_t size;
    } cases[] = {{file, true, false, 5},
                 {folder, true, true, 0},
                 {folder + "\\", true, true, 0},
                 {missing, false, false, 0},
                 {"", false, false, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(FileSystemUtils::Exists(c.path), c.exists);
        EXPECT_EQ(FileSystemUtils::Exists(Wide(c.path)), c.exists);
        EXPECT_EQ(FileSystemUtils::IsDirectory(c.path), c.isDirectory);
        EXPECT_EQ(FileSystemUtils::IsDirectory(c.path.c_str()), c.isDirectory);
        EXPECT_EQ(FileSystemUtils::IsDirectory(Wide(c.path)), c.isDirectory);
        EXPECT_EQ(FileSystemUtils::GetFileSizeInBytes(c.path), c.size);
    }
    EXPECT_FALSE(FileSystemUtils::IsOperatingSystemProcess(file));
}

TEST(FileSystemUtilsTests, OnlyTheWideFormSaysWhyAPathIsNotThere) {
    const TempDir dir;
    const std::string path = dir.Path("100%s");
    const RecordingLogger log;
    EXPECT_FALSE(FileSystemUtils::Exists(path));
    EXPECT_THAT(log.Lines(), IsEmpty());
    EXPECT_FALSE(FileSystemUtils::Exists(Wide(path)));
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                ElementsAre(StartsWith("Cannot get attributes of '" + path + "' because: ")));
}

TEST(FileSystemUtilsTests, TypeAndTimeComeFromTheNormalisedPath) {
    const TempDir dir;
    dir.Write("a.txt", "x");
    const auto stamp =
        fs::file_time_type::clock::from_sys(std::chrono::sys_seconds{std::chrono::seconds{981173106}});
    fs::last_write_time(dir.Native("a.txt"), stamp);
    bool isDirectory = true;
    long long time = 0;
    EXPECT_TRUE(FileSystemUtils::Exists(dir.Path("gone\\..\\.\\a.txt"), isDirectory, &time));
    EXPECT_FALSE(isDirectory);
    EXPECT_EQ(time, 981173106);
    EXPECT_TRUE(FileSystemUtils::Exists(dir.Path() + "\\", isDirectory, nullptr));
    EXPECT_TRUE(isDirectory);
    time = -1;
    EXPECT_FALSE(FileSystemUtils::Exists(dir.Path("missing"), isDirectory, &time));
    EXPECT_TRUE(isDirectory);
    EXPECT_EQ(time, -1);
}

TEST(FileSystemUtilsTests, FileOpenForWritingElsewhereHasNoSizeWhereSharingExists) {
    if (!test::kWindows) GTEST_SKIP() << "Linux has no share modes";
    const TempDir dir;
    const std::string file = dir.Write("a.txt", "12345");
    std::ofstream writer(dir.Native("a.txt"), std::ios::app);
    EXPECT_EQ(FileSystemUtils::GetFileSizeInBytes(file), 0u);
}

TEST(FileSystemUtilsListing, SeparatesFilesFromFoldersAndAppends) {
    const TempDir dir;
    dir.Write("a.txt", "1");
    dir.Write("sub/b.txt", "22");
    dir.Write("sub/deep/c.txt", "333");
    fs::create_directory(dir.Native("empty"));
    std::vector<std::string> names = {"kept"};
    EXPECT_TRUE(FileSystemUtils::GetImmediateFilesWithin(dir.Path(), names));
    EXPECT_THAT(names, ElementsAre("kept", "a.txt"));
    names.clear();
    EXPECT_TRUE(FileSystemUtils::GetImmediateDirectoriesWithin(dir.Path() + "\\", names));
    EXPECT_THAT(names, UnorderedElementsAre("sub", "empty"));
    names.clear();
    EXPECT_TRUE(FileSystemUtils::GetAllFilesWithin(dir.Path(), names));
    EXPECT_THAT(names, ElementsAre(dir.Path("a.txt"), dir.Path("sub\\b.txt"), dir.Path("sub\\deep\\c.txt")));
    EXPECT_EQ(FileSystemUtils::GetDirectorySizeInBytes(dir.Path(), false), 1u);
    EXPECT_EQ(FileSystemUtils::GetDirectorySizeInBytes(dir.Path(), true), 6u);
    names.clear();
    EXPECT_TRUE(FileSystemUtils::GetAllFilesWithin(dir.Path("empty"), names));
    EXPECT_THAT(names, IsEmpty());
}

TEST(FileSystemUtilsListing, OfNothingOrAFileFails) {
    const TempDir dir;
    const std::string file = dir.Write("a.txt", "1");
    for (const std::string& path : {std::string(), dir.Path("missing"), file}) {
        SCOPED_TRACE(path);
        std::vector<std::string> names;
        EXPECT_FALSE(FileSystemUtils::GetImmediateFilesWithin(path, names));
        EXPECT_FALSE(FileSystemUtils::GetImmediateDirectoriesWithin(path, names));
        EXPECT_FALSE(FileSystemUtils::GetAllFilesWithin(path, names));
        EXPECT_THAT(names, IsEmpty());
        EXPECT_EQ(FileSystemUtils::GetDirectorySizeInBytes(path, true), 0u);
        EXPECT_EQ(FileSystemUtils::GetDirectorySizeInBytes(path, false), 0u);
    }
}

TEST(FileSystemUtilsListing, LinksToFoldersAreNotEnteredBelowTheStart) {
    const TempDir dir;
    dir.Write("real/a.txt", "1");
    if (!LinkFolder(dir.Native(), dir.Native("real/loop"))) GTEST_SKIP() << "no links to folders here";
    if (!LinkFolder(dir.Native("real"), dir.Native("start"))) GTEST_SKIP() << "no links to folders here";
    std::vector<std::string> files;
    EXPECT_TRUE(FileSystemUtils::GetAllFilesWithin(dir.Path("start"), files));
    EXPECT_THAT(files, ElementsAre(dir.Path("start\\a.txt")));
    files.clear();
    EXPECT_TRUE(FileSystemUtils::GetImmediateDirectoriesWithin(dir.Path("real"), files));
    EXPECT_THAT(files, ElementsAre("loop"));
}

TEST(FileSystemUtilsFindFiles, MatchesFilesByTheSystemsWildcards) {
    const TempDir dir;
    for (const char* name : {"one.log", "TWO.LOG", "three.log.txt", "bare", "a.b.c"}) dir.Write(name, "x");
    fs::create_directory(dir.Native("x.log"));
    const struct {
        std::string pattern;
        std::vector<std::string> names;
    } cases[] = {
        {"*.log", {"TWO.LOG", "one.log"}},
        {"*.*", {"TWO.LOG", "a.b.c", "bare", "one.log", "three.log.txt"}},
        {"bare.*", {"bare"}},
        {"???.log", {"TWO.LOG", "one.log"}},
        {"two.log", {"TWO.LOG"}},
        {"a.*.c", {"a.b.c"}},
        {"missing*", {}},
        {"", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern);
        std::vector<std::string> expected;
        for (const std::string& name : c.names) expected.push_back(dir.Path(name));
        std::vector<std::string> found;
        EXPECT_EQ(FileSystemUtils::FindFiles(dir.Path() + "\\" + c.pattern, &found), c.names.size());
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, expected);
    }
    EXPECT_EQ(FileSystemUtils::FindFiles(Wide(dir.Path("*.log")), nullptr), 2u);
}

TEST(FileSystemUtilsFindFiles, BarePatternIsListedBelowTheRoot) {
    const TempDir dir;
    dir.Write("a.txt", "x");
    const std::string before = FileSystemUtils::GetWorkingDirectory();
    ASSERT_TRUE(FileSystemUtils::SetWorkingDirectory(dir.Path()));
    std::vector<std::wstring> files;
    EXPECT_EQ(FileSystemUtils::FindFiles(L"*.txt", &files), 1u);
    EXPECT_EQ(FileSystemUtils::GetWorkingDirectory(), dir.Path());
    EXPECT_TRUE(FileSystemUtils::SetWorkingDirectory(before));
    EXPECT_THAT(files, ElementsAre(L"\\a.txt"));
    EXPECT_FALSE(FileSystemUtils::SetWorkingDirectory(dir.Path("missing")));
}

TEST(FileSystemUtilsReading, IsTextModeOnEverySystem) {
    const TempDir dir;
    const std::string limit(32'767, 'x');
    const std::string pieces(131'071, 'y');  // CR LF across the pieces that a file is read in
    const struct {
        std::string content, text, first;
        std::vector<std::string> lines;
    } cases[] = {
        {"a\nb\n", "a\nb\n", "a", {"a", "b", ""}},
        {"a\r\nb", "a\nb", "a", {"a", "b"}},
        {"\r\r\n\r", "\r\n\r", "\r", {"\r", "\r"}},
        {"a\x1A\nb", "a", "a", {"a"}},
        {"a\r\x1A\n", "a\r", "a\r", {"a\r"}},
        {"\x1A", "", "", {}},
        {"", "", "", {}},
        {"\n", "\n", "", {"", ""}},
        {pieces + "\r\nz", pieces + "\nz", pieces, {pieces.substr(0, 32'767)}},
        {limit + "\nz", limit + "\nz", limit, {limit, "z"}},
        {limit + "x\nz", limit + "x\nz", limit + "x", {limit}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content.substr(0, 10));
        const std::string path = dir.Write("a.txt", c.content);
        EXPECT_EQ(FileSystemUtils::ReadContentsOfFile(path), c.text);
        EXPECT_EQ(FileSystemUtils::ReadSingleLineFromFile(path), c.first);
        std::vector<std::string> lines = {"old"};
        FileSystemUtils::ReadContentsOfFile(path, lines);
        EXPECT_EQ(lines, c.lines);
    }
    for (const std::string& path : {dir.Path("missing"), dir.Path()}) {
        EXPECT_EQ(FileSystemUtils::ReadContentsOfFile(path), "");
        EXPECT_EQ(FileSystemUtils::ReadSingleLineFromFile(path), "");
    }
}

TEST(FileSystemUtilsReading, FirstLineOfAHugeFileNeedsNoMoreThanItsBeginning) {
    const TempDir dir;
    const std::string path = dir.Write("huge.txt", "first\nsecond");
    std::error_code error;
    fs::resize_file(dir.Native("huge.txt"), std::uintmax_t{1} << 38, error);  // more than there is memory
    if (error) GTEST_SKIP() << "no sparse files here: " << error.message();
    EXPECT_EQ(FileSystemUtils::ReadSingleLineFromFile(path), "first");
    EXPECT_EQ(FileSystemUtils::GetFileSizeInBytes(path), std::uint64_t{1} << 38);
}

TEST(FileSystemUtilsPlaces, DevicePathsAreTranslated) {
    const struct {
        std::wstring path, expected;
    } cases[] = {{L"\\Device\\HarddiskVolume2\\x", L"\\\\?\\HarddiskVolume2\\x"},
                 {L"\\dEVICE\\", L"\\\\?\\"},
                 {L"\\Device", L"\\Device"},
                 {L"\\\\?\\C:\\x", L"\\\\?\\C:\\x"},
                 {L"C:\\Device\\x", L"C:\\Device\\x"}};
    for (const auto& c : cases) {
        std::wstring path = c.path;
        FileSystemUtils::DeviceNameToVolumeNameFormat(path);
        EXPECT_EQ(path, c.expected);
    }
    for (const char* path : {"", "\\Device\\NoSuchVolume\\x", "\\Device\\HarddiskVolume1", "C:\\x"}) {
        EXPECT_EQ(FileSystemUtils::TranslateNtPathToWin32Path(path), path);
    }
}

TEST(FileSystemUtilsPlaces, TheVolumeIsAFixedDisk) {
    std::vector<std::wstring> disks = {L"kept"};
    EXPECT_TRUE(FileSystemUtils::GetFixedDisks(disks));
    EXPECT_EQ(disks.front(), L"kept");
    EXPECT_THAT(disks, testing::Contains(L"C:"));
    const std::string& temporary = FileSystemUtils::GetSystemTempPath();
    EXPECT_EQ(temporary.back(), '\\');
    EXPECT_TRUE(FileSystemUtils::IsDirectory(temporary));
    EXPECT_EQ(&FileSystemUtils::GetSystemTempPath(), &temporary);
}

}  // namespace
}  // namespace quillon
