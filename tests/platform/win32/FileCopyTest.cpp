#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include "platform/FileApi.h"
#include "platform/Handle.h"
#include "platform/SecurityApi.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::platform {
namespace {

// How Windows copies is its own: a copy has attributes, and the system makes it.
using FileCopy = test::TempDirTest;

TEST_F(FileCopy, ReadOnlyFileIsCopiedAndMovedAsOne) {
    const std::string source = dir.Write("source", "content");
    dir.SetReadOnly("source", true);
    EXPECT_TRUE(CopyFileOver(source, dir.Path("copy"))) << ::GetLastError();
    EXPECT_TRUE(AttributesOf(dir.Path("copy"))->isReadOnly);
    EXPECT_EQ(dir.Read("copy"), "content");

    // A place on another volume than the drive's, which only the emulator has.
    const fs::path memory = "Z:\\dev\\shm";
    if (!fs::is_directory(memory)) GTEST_SKIP() << "there is one volume";
    const fs::path moved = memory / dir.Native().filename();
    EXPECT_TRUE(MovePath(source, test::ToLibraryPath(moved))) << ::GetLastError();
    EXPECT_FALSE(dir.Exists("source"));
    EXPECT_TRUE(AttributesOf(test::ToLibraryPath(moved))->isReadOnly);
    EXPECT_TRUE(MovePath(test::ToLibraryPath(moved), source)) << ::GetLastError();
    EXPECT_FALSE(fs::exists(moved));
    EXPECT_EQ(dir.Read("source"), "content");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Native()), {}), 2);
    for (const char* const name : {"source", "copy"}) dir.SetReadOnly(name, false);
}

TEST_F(FileCopy, WhatGrowsMeanwhileIsCopiedAsFarAsItWent) {
    const std::string source = dir.Write("source", std::string(8 << 20, 'a'));
    constexpr int kMostPieces = 4000;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::atomic<bool> isCopied{false}, hasEnded{false};
    std::atomic<int> pieces{0};
    std::thread writer([&] {
        const FileHandle file(::CreateFileW(WidePath(source)->c_str(), FILE_APPEND_DATA, kShareAll, nullptr,
                                            OPEN_EXISTING, 0, nullptr));
        const std::string piece(256 << 10, 'b');
        DWORD count = 0;
        while (!isCopied && pieces < kMostPieces && std::chrono::steady_clock::now() < end) {
            ::WriteFile(file.Get(), piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr);
            ++pieces;
        }
        hasEnded = !isCopied;
    });
    while (pieces == 0) std::this_thread::yield();
    const auto before = fs::file_size(dir.Native("source"));
    EXPECT_TRUE(CopyFileOver(source, dir.Path("copy"))) << ::GetLastError();
    isCopied = true;
    writer.join();
    EXPECT_FALSE(hasEnded) << "the copy went on as long as its source grew";
    EXPECT_GE(fs::file_size(dir.Native("copy")), before);
    EXPECT_LT(fs::file_size(dir.Native("copy")), fs::file_size(dir.Native("source")));
}

TEST_F(FileCopy, RightsAreReadAndGivenByHandle) {
    const std::string source = dir.Write("source", "x"), target = dir.Write("target", "y");
    if (!SetPrivilege(L"SeSecurityPrivilege", true) || !SetPrivilege(L"SeRestorePrivilege", true))
        GTEST_SKIP() << "the user does not have the privileges";
    ASSERT_TRUE(RestrictToCurrentUser(source));
    const auto rights = ReadSecurity(source, 1024);
    ASSERT_TRUE(rights) << ::GetLastError();
    EXPECT_FALSE(ReadSecurity(source, 16));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_TRUE(WriteSecurity(target, *rights)) << ::GetLastError();
    EXPECT_EQ(ReadSecurity(target, 1024), rights);
    EXPECT_FALSE(WriteSecurity(dir.Path("missing"), *rights));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    for (const wchar_t* const name : {L"SeSecurityPrivilege", L"SeRestorePrivilege"})
        SetPrivilege(name, false);
}

}  // namespace
}  // namespace quillon::platform
