#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/FolderWalk.h"
#include "quillon/FileSystemUtils.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::platform {
namespace {

/// The emulator's own system reaches the same files, and can make the links that the emulated one cannot.
std::string OutsideTheEmulator(const fs::path& path) {
    const char* const prefix = std::getenv("WINEPREFIX");
    std::string text = path.generic_string();
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return prefix == nullptr ? "" : std::string(prefix) + "/dosdevices/" + text;
}

bool MakeLink(const fs::path& target, const fs::path& link) {
    const std::string command = "start /wait /unix /bin/ln -s " + OutsideTheEmulator(target) + ' ' +
                                OutsideTheEmulator(link) + " >NUL 2>NUL";
    return std::system(command.c_str()) == 0 && fs::exists(link / "precious");
}

std::vector<std::string> NamesIn(FolderWalk& walk) {
    std::vector<std::string> names;
    EXPECT_TRUE(walk.List([&](DirectoryEntry&& entry) { names.push_back(std::move(entry.name)); }));
    return names;
}

TEST(FolderWalkLink, DirectoryThatBecomesALinkLeadsNowhere) {
    const test::TempDir dir;
    dir.Write("outside/precious", "x");
    fs::create_directories(dir.Native("tree/sub"));
    auto walk = FolderWalk::Open(dir.Path("tree"), FolderWalk::Purpose::ToErase);
    ASSERT_TRUE(walk);
    ASSERT_EQ(NamesIn(*walk), std::vector<std::string>{"sub"});

    fs::remove(dir.Native("tree/sub"));
    if (!MakeLink(dir.Native("outside"), dir.Native("tree/sub")))
        GTEST_SKIP() << "links need the emulator here, or a privilege";
    EXPECT_FALSE(walk->Enter("sub"));
    EXPECT_FALSE(walk->RemoveEmptyDirectory("sub"));
    walk.reset();
    FileSystemUtils::EraseDirectory(dir.Path("tree"));
    EXPECT_EQ(dir.Read("outside/precious"), "x");
}

TEST(FolderWalkLink, WhatTakesTheNameOfAnOpenDirectoryIsNotListed) {
    const test::TempDir dir;
    dir.Write("tree/own", "x");
    auto walk = FolderWalk::Open(dir.Path("tree"), FolderWalk::Purpose::ToList);
    ASSERT_TRUE(walk);
    fs::rename(dir.Native("tree"), dir.Native("gone"));
    dir.Write("tree/foreign", "x");
    EXPECT_EQ(NamesIn(*walk), std::vector<std::string>{"own"});
}

TEST(FolderWalkLink, ListsADirectoryThatOneCallDoesNotTell) {
    const test::TempDir dir;
    for (int i = 0; i < 500; ++i) dir.Write(std::string(100, 'n') + std::to_string(i), "x");
    auto walk = FolderWalk::Open(dir.Path(), FolderWalk::Purpose::ToList);
    ASSERT_TRUE(walk);
    EXPECT_EQ(NamesIn(*walk).size(), 500U);
}

}  // namespace
}  // namespace quillon::platform
