#include <gmock/gmock.h>

#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/Handle.h"
#include "platform/win32/WindowsHeaders.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/StringUtils.h"
#include "support/TempDir.h"

namespace quillon::test {
namespace {

using FS = FileSystemUtils;
using OddNames = TempDirTest;

bool Make(const std::wstring& extendedPath) {
    const platform::FileHandle file(
        ::CreateFileW(extendedPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    DWORD count = 0;
    return file && ::WriteFile(file.Get(), "inner", 5, &count, nullptr) != 0;
}

// Only Windows has names that its own functions reach by the extended form of a path alone, and names that
// are no UTF-16.
TEST_F(OddNames, EveryListedNameIsUsableAndNoneLeadsElsewhere) {
    for (const char* const name : {"drop/victim", "drop/\xEF\xBF\xBD"}) dir.Write(name, "precious");
    const std::wstring drop = L"\\\\?\\" + StringUtils::NarrowStringToWide(dir.Path("drop")) + L'\\';
    const std::wstring names[] = {L"victim.",       L"victim..", L"victim ",  {0xD800},  {L'a', 0xDFFF, L'.'},
                                  {0xDBC0, 0xDC2E}, L"nul",      L"Com1.txt", L"AUX .c", L"con."};
    std::size_t made = 0;
    for (const std::wstring& name : names) made += Make(drop + name) ? 1 : 0;
    std::cout << made << " of " << std::size(names) << " names can be made\n";
    ASSERT_GE(made, 8U);

    std::vector<std::string> all, found;
    std::vector<std::wstring> wide;
    EXPECT_TRUE(FS::GetAllFilesWithin(dir.Path("drop"), all));
    ASSERT_EQ(all.size(), made + 2);
    EXPECT_EQ(FS::GetDirectorySizeInBytes(dir.Path("drop"), true), made * 5 + 2 * 8);
    EXPECT_EQ(FS::FindFiles(dir.Path("drop\\*"), &found), made + 2);
    EXPECT_EQ(FS::FindFiles(StringUtils::NarrowStringToWide(dir.Path("drop\\*")), &wide), made + 2);
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(all));
    for (const std::wstring& path : wide) EXPECT_TRUE(FS::Exists(path));
    std::size_t inner = 0;
    for (const std::string& path : all) {
        SCOPED_TRACE(path);
        if (FS::ReadContentsOfFile(path) != "inner") continue;
        ++inner;
        EXPECT_EQ(FS::GetFileSizeInBytes(path), 5U);
        EXPECT_TRUE(FS::DuplicateFile(path, dir.Path("copy")));
        EXPECT_EQ(dir.Read("copy"), "inner");
        EXPECT_TRUE(FS::RenameFile(path, path + "+", false));
        EXPECT_TRUE(FS::RenameFile(path + "+", path, false));
        EXPECT_TRUE(FS::EraseFile(path, false));
    }
    EXPECT_EQ(inner, made);
    EXPECT_EQ(dir.Read("drop/victim"), "precious");
    EXPECT_EQ(dir.Read("drop/\xEF\xBF\xBD"), "precious");
}

}  // namespace
}  // namespace quillon::test
