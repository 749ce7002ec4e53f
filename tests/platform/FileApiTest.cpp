#include "platform/FileApi.h"

#include <gmock/gmock.h>

#include "platform/ErrorText.h"
#include "platform/FolderWalk.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::platform {
namespace {

using FileApiTest = test::TempDirTest;
using FolderWalkMoves = test::TempDirTest;

TEST_F(FileApiTest, FileThatGrowsIsReadAsFarAsItWentWhenItWasOpened) {
    const std::string path = dir.Write("log", std::string(200'000, 'a'));
    std::string content;
    EXPECT_TRUE(ReadPieces(path, [&](std::string_view piece) {
        content += piece;
        return WriteWholeFile(path, "", "grown", WriteMode::Append);
    }));
    EXPECT_EQ(content, std::string(200'000, 'a'));
}

TEST_F(FileApiTest, WhatDoesNotFitIntoMemoryIsAFailure) {
    if (test::kSanitized) GTEST_SKIP() << "the sanitizer ends the program instead";
    const std::string path = dir.Write("sparse", "");
    std::error_code refused;
    fs::resize_file(dir.Native("sparse"), std::uint64_t{1} << 43, refused);
    if (refused) GTEST_SKIP() << "no file of that size here: " << refused.message();
    EXPECT_EQ(ReadWholeFile(path), std::nullopt);
    EXPECT_EQ(LastError(), 8u);
}

TEST_F(FileApiTest, AFileThatTellsNoSizeHasToEnd) {
    const std::string endless = "/proc/self/pagemap", status = "/proc/self/status";
    if (!fs::exists(endless)) GTEST_SKIP() << "only Linux has files without a size";
    const auto content = ReadWholeFile(status);
    ASSERT_TRUE(content);
    EXPECT_GT(content->size(), 100u);
    EXPECT_EQ(ReadWholeFile(status, 7), "Name:\t" + content->substr(6, 1));
    EXPECT_EQ(ReadWholeFile(endless), std::nullopt);
    EXPECT_EQ(LastError(), 8u);
    std::size_t seen = 0;
    EXPECT_FALSE(ReadPieces(endless, [&](std::string_view piece) {
        seen += piece.size();
        return true;
    }));
    EXPECT_EQ(seen, std::size_t{64} << 20);
}

TEST_F(FolderWalkMoves, OneFolderAtATimeAndNeverThroughALink) {
    dir.Write("a/b/file", "12345");
    auto walk = FolderWalk::Open(dir.Path(), FolderWalk::Purpose::ToErase);
    ASSERT_TRUE(walk);
    EXPECT_FALSE(walk->Leave());
    EXPECT_FALSE(walk->Enter("missing"));
    std::error_code refused;
    fs::create_directory_symlink(dir.Native("a"), dir.Native("link"), refused);
    EXPECT_FALSE(walk->Enter("link")) << "taken for a folder, and swapped";
    fs::remove(dir.Native("link"));
    ASSERT_TRUE(walk->Enter("a") && walk->Enter("b"));
    EXPECT_FALSE(walk->Enter("file"));
    EXPECT_EQ(walk->SizeOf("file"), 5u);
    EXPECT_FALSE(walk->RemoveEmptyDirectory("file"));
    EXPECT_TRUE(walk->RemoveFile("file"));
    ASSERT_TRUE(walk->Leave());
    EXPECT_FALSE(walk->RemoveFile("b"));
    EXPECT_TRUE(walk->RemoveEmptyDirectory("b"));
    ASSERT_TRUE(walk->Leave());
    EXPECT_TRUE(walk->RemoveEmptyDirectory("a"));
    EXPECT_TRUE(fs::is_empty(dir.Native()));
}

TEST_F(FolderWalkMoves, FolderMovedAwayMeanwhileEndsIt) {
    if (test::kWindows) GTEST_SKIP() << "an open folder cannot be moved there";
    dir.Write("tree/sub/file", "x");
    dir.Write("elsewhere/file", "x");
    auto walk = FolderWalk::Open(dir.Path("tree"), FolderWalk::Purpose::ToErase);
    ASSERT_TRUE(walk && walk->Enter("sub"));
    fs::rename(dir.Native("tree/sub"), dir.Native("elsewhere/sub"));
    EXPECT_FALSE(walk->Leave());
    EXPECT_TRUE(dir.Exists("elsewhere/file"));
}

}  // namespace
}  // namespace quillon::platform
