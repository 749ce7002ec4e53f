#include "quillon/FileSystemUtils.h"

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <utility>

#include "quillon/ErrorHelper.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using FS = FileSystemUtils;
using FileSystemUtilsTest = test::TempDirTest;
using Names = std::vector<std::string>;
using Lister = bool (*)(const std::string&, Names&);
using testing::ElementsAre;

std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

Names Listed(Lister list, const std::string& folder) {
    Names names = {"kept"};
    EXPECT_TRUE(list(folder, names));
    return names;
}

TEST_F(FileSystemUtilsTest, TellsFilesFromFoldersAndNothing) {
    const std::tuple<std::string, bool, bool, std::uint64_t> cases[] = {
        {dir.Write("folder/a.txt", "12345"), true, false, 5},
        {dir.Path("folder"), true, true, 0},
        {dir.Path("folder\\"), true, true, 0},
        {dir.Path("missing"), false, false, 0},
        {"", false, false, 0},
    };
    for (const auto& [path, exists, isDirectory, size] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(FS::Exists(path), exists);
        EXPECT_EQ(FS::Exists(Wide(path)), exists);
        EXPECT_EQ(FS::IsDirectory(path), isDirectory);
        EXPECT_EQ(FS::IsDirectory(path.c_str()), isDirectory);
        EXPECT_EQ(FS::IsDirectory(Wide(path)), isDirectory);
        EXPECT_EQ(FS::GetFileSizeInBytes(path), size);
    }
}

TEST_F(FileSystemUtilsTest, OnlyTheWideFormSaysWhyAPathIsNotThere) {
    const std::string path = dir.Path("100%s");
    const test::RecordingLogger log;
    EXPECT_FALSE(FS::Exists(path));
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_FALSE(FS::Exists(Wide(path)));
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                ElementsAre(testing::StartsWith("Cannot get attributes of '" + path + "' because: ")));
}

TEST_F(FileSystemUtilsTest, TypeAndTimeComeFromTheNormalisedPath) {
    dir.Write("a.txt", "x");
    const std::chrono::sys_seconds stamp{std::chrono::seconds{981173106}};
    fs::last_write_time(dir.Native("a.txt"), fs::file_time_type::clock::from_sys(stamp));
    bool isDirectory = true;
    long long time = 0;
    EXPECT_TRUE(FS::Exists(dir.Path("gone\\..\\.\\a.txt"), isDirectory, &time));
    EXPECT_FALSE(isDirectory);
    EXPECT_EQ(time, 981173106);
    EXPECT_TRUE(FS::Exists(dir.Path() + "\\", isDirectory, nullptr));
    EXPECT_TRUE(isDirectory);
    EXPECT_FALSE(FS::Exists(dir.Path("missing"), isDirectory, &time));
    EXPECT_TRUE(isDirectory);
    EXPECT_EQ(time, 981173106);
}

TEST_F(FileSystemUtilsTest, FileOpenForWritingElsewhereHasNoSizeWhereSharingExists) {
    if (!test::kWindows) GTEST_SKIP() << "Linux has no share modes";
    const std::string file = dir.Write("a.txt", "12345");
    std::ofstream writer(dir.Native("a.txt"), std::ios::app);
    EXPECT_EQ(FS::GetFileSizeInBytes(file), 0u);
}

TEST_F(FileSystemUtilsTest, ListingsSeparateFilesFromFoldersAndAppend) {
    dir.Write("a.txt", "1");
    dir.Write("sub/b.txt", "22");
    dir.Write("sub/deep/c.txt", "333");
    fs::create_directory(dir.Native("empty"));
    EXPECT_THAT(Listed(FS::GetImmediateFilesWithin, dir.Path()), ElementsAre("kept", "a.txt"));
    EXPECT_THAT(Listed(FS::GetImmediateDirectoriesWithin, dir.Path() + "\\"),
                testing::UnorderedElementsAre("kept", "sub", "empty"));
    EXPECT_THAT(Listed(FS::GetAllFilesWithin, dir.Path()),
                ElementsAre("kept", dir.Path("a.txt"), dir.Path("sub\\b.txt"), dir.Path("sub\\deep\\c.txt")));
    EXPECT_THAT(Listed(FS::GetAllFilesWithin, dir.Path("empty")), ElementsAre("kept"));
    EXPECT_EQ(FS::GetDirectorySizeInBytes(dir.Path(), false), 1u);
    EXPECT_EQ(FS::GetDirectorySizeInBytes(dir.Path(), true), 6u);
}

TEST_F(FileSystemUtilsTest, ListingNothingOrAFileFails) {
    const Lister listers[] = {FS::GetImmediateFilesWithin, FS::GetImmediateDirectoriesWithin,
                              FS::GetAllFilesWithin};
    for (const std::string& path : {std::string(), dir.Path("missing"), dir.Write("a.txt", "1")}) {
        SCOPED_TRACE(path);
        Names names;
        for (const Lister list : listers) EXPECT_FALSE(list(path, names));
        EXPECT_THAT(names, testing::IsEmpty());
        EXPECT_EQ(FS::GetDirectorySizeInBytes(path, true) + FS::GetDirectorySizeInBytes(path, false), 0u);
    }
}

TEST_F(FileSystemUtilsTest, LinksToFoldersAreNotEnteredBelowTheStart) {
    dir.Write("real/a.txt", "1");
    std::error_code error;
    fs::create_directory_symlink(dir.Native(), dir.Native("real/loop"), error);
    if (error || !dir.Exists("real/loop")) GTEST_SKIP() << "no links here";
    fs::create_directory_symlink(dir.Native("real"), dir.Native("start"));
    EXPECT_THAT(Listed(FS::GetAllFilesWithin, dir.Path("start")),
                ElementsAre("kept", dir.Path("start\\a.txt")));
    EXPECT_THAT(Listed(FS::GetImmediateDirectoriesWithin, dir.Path("real")), ElementsAre("kept", "loop"));
}

/// What a walk visits, as "path size" below the directory, and how it ended.
std::pair<FS::WalkEnd, Names> Walked(const test::TempDir& dir, const FS::WalkOptions& options,
                                     const std::function<bool(const FS::WalkEntry&)>& visit = {}) {
    Names seen;
    const FS::WalkEnd end = FS::WalkFiles(dir.Path(), options, [&](const FS::WalkEntry& entry) {
        const std::string name = entry.path.substr(dir.Path().size() + 1);
        seen.push_back(entry.isDirectory ? name + (entry.isLink ? "@" : "/")
                                         : name + ' ' + std::to_string(entry.size));
        return !visit || visit(entry);
    });
    return {end, seen};
}

TEST_F(FileSystemUtilsTest, AWalkTellsSizesAndTimesWithinItsLimits) {
    dir.Write("a.txt", "1");
    dir.Write("sub/b.txt", "22");
    dir.Write("sub/deep/c.txt", "333");
    const std::chrono::sys_seconds stamp{std::chrono::seconds{981173106}};
    fs::last_write_time(dir.Native("a.txt"), fs::file_time_type::clock::from_sys(stamp));
    FS::WalkOptions all;
    all.withDirectories = true;
    const auto isStamped = [&](const FS::WalkEntry& entry) {
        EXPECT_EQ(entry.modified == TimePoint(stamp), entry.path == dir.Path("a.txt")) << entry.path;
        return true;
    };
    EXPECT_THAT(Walked(dir, all, isStamped),
                testing::Pair(FS::WalkEnd::Complete, ElementsAre("a.txt 1", "sub/", "sub\\b.txt 2",
                                                                 "sub\\deep/", "sub\\deep\\c.txt 3")));
    const auto with = [](auto change) {
        FS::WalkOptions options;
        change(options);
        return options;
    };
    int asked = 0;
    const std::tuple<FS::WalkOptions, FS::WalkEnd, Names> cases[] = {
        {{}, FS::WalkEnd::Complete, {"a.txt 1", "sub\\b.txt 2", "sub\\deep\\c.txt 3"}},
        {with([](auto& o) { o.deepest = 0; }), FS::WalkEnd::Complete, {"a.txt 1"}},
        {with([](auto& o) { o.deepest = 1; }), FS::WalkEnd::Complete, {"a.txt 1", "sub\\b.txt 2"}},
        {with([](auto& o) { o.mostEntries = 2; }), FS::WalkEnd::TooMany, {"a.txt 1", "sub\\b.txt 2"}},
        {with([](auto& o) { o.mostEntries = 3; }),
         FS::WalkEnd::Complete,
         {"a.txt 1", "sub\\b.txt 2", "sub\\deep\\c.txt 3"}},
        {with([&](auto& o) { o.isCancelled = [&] { return ++asked > 2; }; }),
         FS::WalkEnd::Cancelled,
         {"a.txt 1"}},
    };
    for (const auto& [options, end, seen] : cases)
        EXPECT_THAT(Walked(dir, options), testing::Pair(end, seen));
    EXPECT_THAT(Walked(dir, {}, [](const FS::WalkEntry&) { return false; }),
                testing::Pair(FS::WalkEnd::Stopped, ElementsAre("a.txt 1")));
    EXPECT_EQ(FS::WalkFiles(dir.Path("missing"), {}, [](const FS::WalkEntry&) { return true; }),
              FS::WalkEnd::Failed);
}

TEST_F(FileSystemUtilsTest, AWalkGoesOnWithoutWhatVanishes) {
    if (test::kWindows) GTEST_SKIP() << "a directory that a walk is in stays there";
    for (const char* name : {"1/a", "2/in/b", "2/in/deep/c", "3/d"}) dir.Write(name, "x");
    Names seen;
    const auto end = FS::WalkFiles(dir.Path(), {}, [&](const FS::WalkEntry& entry) {
        seen.push_back(entry.path.substr(dir.Path().size() + 1));
        // Of those that are left one goes with the way back from it, and one before it is entered.
        if (seen.back() == "2\\in\\deep\\c") fs::remove_all(dir.Native("2"));
        if (seen.size() == 1) fs::remove_all(dir.Native(seen.back() == "1\\a" ? "3" : "1"));
        return true;
    });
    EXPECT_EQ(end, FS::WalkEnd::Complete);
    EXPECT_EQ(seen.size(), 3u) << testing::PrintToString(seen);
    EXPECT_THAT(seen, testing::IsSupersetOf({"2\\in\\b", "2\\in\\deep\\c"}));
}

TEST_F(FileSystemUtilsTest, FindsFilesByTheSystemsWildcards) {
    for (const char* name : {"one.log", "TWO.LOG", "three.log.txt", "bare"}) dir.Write(name, "x");
    fs::create_directory(dir.Native("x.log"));
    const std::pair<std::string, Names> cases[] = {
        {"*.log", {"TWO.LOG", "one.log"}},
        {"*.*", {"TWO.LOG", "bare", "one.log", "three.log.txt"}},
        {"two.log", {"TWO.LOG"}},
        {"missing*", {}},
        {"", {}},
    };
    for (const auto& [pattern, names] : cases) {
        Names expected, found;
        for (const std::string& name : names) expected.push_back(dir.Path(name));
        EXPECT_EQ(FS::FindFiles(dir.Path() + "\\" + pattern, &found), names.size()) << pattern;
        EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected)) << pattern;
    }
    EXPECT_EQ(FS::FindFiles(Wide(dir.Path("*.log")), nullptr), 2u);
}

TEST_F(FileSystemUtilsTest, BarePatternIsListedBelowTheRoot) {
    dir.Write("a.txt", "x");
    const std::string before = FS::GetWorkingDirectory();
    ASSERT_TRUE(FS::SetWorkingDirectory(dir.Path()));
    std::vector<std::wstring> files;
    EXPECT_EQ(FS::FindFiles(L"*.txt", &files), 1u);
    EXPECT_EQ(FS::GetWorkingDirectory(), dir.Path());
    EXPECT_TRUE(FS::SetWorkingDirectory(before));
    EXPECT_THAT(files, ElementsAre(L"\\a.txt"));
}

TEST_F(FileSystemUtilsTest, ReadingIsTextModeOnEverySystem) {
    const std::string limit(32'767, 'x');
    const std::string pieces(131'071, 'y');  // CR LF across the pieces that a file is read in
    const std::tuple<std::string, std::string, std::string, Names> cases[] = {
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
    for (const auto& [content, text, first, expected] : cases) {
        SCOPED_TRACE(content.substr(0, 10));
        const std::string path = dir.Write("a.txt", content);
        EXPECT_EQ(FS::ReadContentsOfFile(path), text);
        EXPECT_EQ(FS::ReadSingleLineFromFile(path), first);
        Names lines = {path};
        FS::ReadContentsOfFile(lines[0], lines);
        EXPECT_EQ(lines, expected);
    }
    for (const std::string& path : {dir.Path("missing"), dir.Path()})
        EXPECT_EQ(FS::ReadContentsOfFile(path) + FS::ReadSingleLineFromFile(path), "") << path;
}

TEST_F(FileSystemUtilsTest, FirstLineOfAHugeFileTakesLittleMemory) {
    const std::string path = dir.Write("huge.txt", "first\nsecond");
    std::error_code error;
    fs::resize_file(dir.Native("huge.txt"), std::uintmax_t{1} << 38, error);  // more than there is memory
    if (error) GTEST_SKIP() << "no sparse files here: " << error.message();
    EXPECT_EQ(FS::ReadSingleLineFromFile(path), "first");
    EXPECT_EQ(FS::GetFileSizeInBytes(path), std::uint64_t{1} << 38);
    dir.Write("line.txt", "endless");
    fs::resize_file(dir.Native("line.txt"), std::uintmax_t{1} << 38);
    EXPECT_EQ(FS::ReadSingleLineFromFile(dir.Path("line.txt")), "");
    EXPECT_EQ(ErrorHelper::GetLastErrorCode(), 8);
}

TEST(FileSystemUtilsPlaces, DevicePathsAreTranslated) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"\\Device\\HarddiskVolume2\\x", L"\\\\?\\HarddiskVolume2\\x"},
        {L"\\dEVICE\\", L"\\\\?\\"},
        {L"\\Device", L"\\Device"},
        {L"\\\\?\\C:\\x", L"\\\\?\\C:\\x"},
        {L"C:\\Device\\x", L"C:\\Device\\x"},
    };
    for (auto [path, expected] : cases) {
        SCOPED_TRACE(path);
        FS::DeviceNameToVolumeNameFormat(path);
        EXPECT_EQ(path, expected);
    }
    for (const char* path : {"", "\\Device\\NoSuchVolume\\x", "\\Device\\HarddiskVolume1", "C:\\x"})
        EXPECT_EQ(FS::TranslateNtPathToWin32Path(path), path) << path;
}

TEST(FileSystemUtilsPlaces, TheVolumeIsAFixedDisk) {
    std::vector<std::wstring> disks = {L"kept"};
    EXPECT_TRUE(FS::GetFixedDisks(disks));
    EXPECT_EQ(disks.front(), L"kept");
    EXPECT_THAT(disks, testing::Contains(L"C:"));
    EXPECT_EQ(FS::GetSystemTempPath().back(), '\\');
    EXPECT_TRUE(FS::IsDirectory(FS::GetSystemTempPath()));
}

}  // namespace
}  // namespace quillon
