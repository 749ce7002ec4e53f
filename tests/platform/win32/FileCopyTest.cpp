#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include "platform/FileApi.h"
#include "platform/SecurityApi.h"
#include "platform/win32/WindowsHeaders.h"
#include "quillon/FileSystemUtils.h"
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

TEST_F(FileCopy, AnExtendedPathMayHaveSlashes) {
    std::string target = R"(\\?\)" + dir.Path("copy");
    std::replace(target.begin(), target.end(), '\\', '/');
    EXPECT_TRUE(CopyFileOver(dir.Write("source", "content"), target)) << ::GetLastError();
    EXPECT_EQ(dir.Read("copy"), "content");
}

/// The size of the temporary file in a directory; 0 when there is none.
std::uintmax_t SizeOfCopy(const fs::path& folder) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored)) {
        const auto size = entry.path().extension() == ".part" ? fs::file_size(entry.path(), ignored) : 0;
        if (size > 0 && !ignored) return size;
    }
    return 0;
}

TEST_F(FileCopy, WhatGrowsMeanwhileIsCopiedAsFarAsItWent) {
    constexpr std::uintmax_t kBefore = 96 << 20, kAfter = 4 * kBefore;
    const std::string source = dir.Write("source", "");
    fs::resize_file(dir.Native("source"), kBefore);
    fs::create_directory(dir.Native("to"));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    std::atomic<bool> isCopied{false};
    std::uintmax_t most = 0;
    bool hasGrown = false;
    std::thread writer([&] {
        for (; !isCopied && std::chrono::steady_clock::now() < end; std::this_thread::yield()) {
            const auto size = SizeOfCopy(dir.Native("to"));
            most = std::max(most, size);
            if (size == 0 || size >= kBefore || hasGrown) continue;
            fs::resize_file(dir.Native("source"), kAfter);
            hasGrown = true;
        }
    });
    EXPECT_TRUE(CopyFileOver(source, dir.Path("to\\copy"))) << ::GetLastError();
    isCopied = true;
    writer.join();
    EXPECT_EQ(fs::file_size(dir.Native("to/copy")), kBefore);
    EXPECT_TRUE(hasGrown) << "the copy was made too fast to be seen";
    EXPECT_LT(most, kAfter / 2) << "what it has grown by was copied as well, and then cut";
}

TEST_F(FileCopy, MoveWhoseOriginalMustStayLeavesNoCopy) {
    const fs::path memory = "Z:\\dev\\shm";
    if (!fs::is_directory(memory)) GTEST_SKIP() << "there is one volume";
    const fs::path folder = memory / dir.Native().filename();
    fs::create_directory(folder);
    const std::string source = dir.Write("source", "");
    fs::resize_file(dir.Native("source"), 96 << 20);
    for (const bool isReadOnly : {false, true}) {
        dir.SetReadOnly("source", isReadOnly);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        HANDLE held = INVALID_HANDLE_VALUE;  // since the copy began, without leave to delete
        std::thread holder([&] {
            while (SizeOfCopy(folder) == 0 && std::chrono::steady_clock::now() < end)
                std::this_thread::yield();
            held = ::CreateFileW(dir.Native("source").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                 OPEN_EXISTING, 0, nullptr);
        });
        EXPECT_FALSE(MovePath(source, test::ToLibraryPath(folder / "copy")));
        EXPECT_EQ(::GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
        holder.join();
        EXPECT_NE(held, INVALID_HANDLE_VALUE);
        ::CloseHandle(held);
        EXPECT_TRUE(fs::is_empty(folder)) << isReadOnly;
        EXPECT_EQ(fs::file_size(dir.Native("source")), 96U << 20);
    }
    dir.SetReadOnly("source", false);
    fs::remove_all(folder);
}

TEST_F(FileCopy, FileThatIsWrittenToIsNotMovedToAnotherVolume) {
    const fs::path memory = "Z:\\dev\\shm";
    if (!fs::is_directory(memory)) GTEST_SKIP() << "there is one volume";
    const std::string source = dir.Write("source", "x");
    const fs::path moved = memory / dir.Native().filename();
    const FileHandle writer(::CreateFileW(dir.Native("source").c_str(), FILE_APPEND_DATA,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(MovePath(source, test::ToLibraryPath(moved)));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(dir.Exists("source") && !fs::exists(moved));
}

TEST_F(FileCopy, RenameOverADirectoryInUseErasesNothing) {
    const std::string source = dir.Write("source", "new");
    dir.Write("tree/inner", "old");
    const FileHandle user(::CreateFileW(dir.Native("tree").c_str(), FILE_LIST_DIRECTORY,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    ASSERT_TRUE(user);
    EXPECT_FALSE(FileSystemUtils::RenameFile(source, dir.Path("tree"), true));
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(dir.Read("source") + dir.Read("tree/inner"), "newold");
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
