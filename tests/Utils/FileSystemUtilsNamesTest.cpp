#include <gmock/gmock.h>

#include <fstream>

#include "quillon/FileSystemUtils.h"
#include "quillon/StringUtils.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using FS = FileSystemUtils;
using FileSystemNamesTest = test::TempDirTest;
using namespace std::string_literals;

TEST_F(FileSystemNamesTest, PathWithANulIsRefusedWhole) {
    const std::string keep = dir.Write("keep", "x");
    const std::string bad = keep + "\0.tmp"s;
    const std::string free = dir.Path("free") + "\0x"s;
    const std::pair<const char*, std::function<bool()>> calls[] = {
        {"exists", [&] { return FS::Exists(bad); }},
        {"find", [&] { return FS::FindFiles(bad, nullptr) != 0; }},
        {"find, expanding wide",
         [&] { return FS::FindFilesExpandingEnvVars(StringUtils::NarrowStringToWide(bad), nullptr) != 0; }},
        {"erase", [&] { return FS::EraseFile(bad, true); }},
        {"erase directory", [&] { return FS::EraseDirectory(dir.Path() + "\0x"s); }},
        {"make", [&] { return FS::MakeDirectory(free); }},
        {"rename", [&] { return FS::RenameFile(bad, dir.Path("b"), true); }},
        {"copy", [&] { return FS::DuplicateFile(keep, free); }},
        {"secure", [&] { return FS::SecureFile(bad); }},
        {"write", [&] { return FS::WriteUtf8NoBomFile(bad, "y"); }},
        {"change directory", [&] { return FS::SetWorkingDirectory(dir.Path() + "\0x"s); }},
    };
    for (const auto& [what, call] : calls) {
        SCOPED_TRACE(what);
        EXPECT_FALSE(call());
        EXPECT_THAT(StringUtils::GetLastErrorAsString(), testing::StartsWith("(123/"));
    }
    EXPECT_EQ(dir.Read("keep"), "x");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Native()), {}), 1);
}

TEST_F(FileSystemNamesTest, EveryListedNameIsUsableAndNoneLeadsElsewhere) {
    if (test::kWindows) GTEST_SKIP() << "no such names there";
    dir.Write("victim.txt", "precious");
    fs::create_directories(dir.Native("drop"));
    const std::vector<std::string> names = {"..\\victim.txt", "..\\..\\victim.txt", "\\",
                                            "a\xFF\\b",       "\xEF\x81\x9C",       "\xC3",
                                            "\xC4",           "C:\\victim.txt"};
    for (const std::string& name : names) std::ofstream(dir.Native("drop").string() + '/' + name) << "inner";
    fs::create_directory(dir.Native("drop").string() + "/sub\\\xFE");
    std::ofstream(dir.Native("drop").string() + "/sub\\\xFE/..\\victim.txt") << "inner";

    std::vector<std::string> all, found, immediate;
    EXPECT_TRUE(FS::GetAllFilesWithin(dir.Path("drop"), all));
    EXPECT_EQ(all.size(), names.size() + 1);
    EXPECT_EQ(FS::GetDirectorySizeInBytes(dir.Path("drop"), true), all.size() * 5);
    EXPECT_EQ(FS::FindFiles(dir.Path("drop\\*"), &found), names.size());
    EXPECT_TRUE(FS::GetImmediateFilesWithin(dir.Path("drop"), immediate));
    EXPECT_EQ(FS::GetDirectorySizeInBytes(dir.Path("drop"), false), immediate.size() * 5);
    for (const std::string& path : found) {
        EXPECT_EQ(FS::ReadContentsOfFile(path), "inner") << path;
        EXPECT_EQ(FS::FindFiles(path, nullptr), 1U) << path;
    }
    for (const std::string& path : all) {
        SCOPED_TRACE(path);
        EXPECT_EQ(FS::ReadContentsOfFile(path), "inner");
        EXPECT_TRUE(FS::RenameFile(path, path + "+", false));
        EXPECT_TRUE(FS::EraseFile(path + "+", false));
    }
    EXPECT_TRUE(FS::EraseDirectory(dir.Path("drop")));
    EXPECT_EQ(dir.Read("victim.txt"), "precious");
}

}  // namespace
}  // namespace quillon
