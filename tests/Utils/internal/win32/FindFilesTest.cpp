#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "platform/win32/WindowsHeaders.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/StringUtils.h"
#include "support/TempDir.h"

namespace quillon::test {
namespace {

using FS = FileSystemUtils;
using FindFiles = TempDirTest;
using testing::ElementsAre;

// Only Windows has a code page that the value of a variable need not fit into.
TEST_F(FindFiles, VariablesOfAPatternHoldAnyText) {
    const std::string name = "\xD0\xB6\xE2\x82\xAC\xE4\xB8\xAD";
    const std::string file = dir.Write(name + "/a.txt", "x");
    const std::wstring folder = StringUtils::NarrowStringToWide(dir.Path(name));
    ASSERT_TRUE(::SetEnvironmentVariableW(L"QUILLON_TEST_FOLDER", folder.c_str()));
    std::vector<std::string> files;
    std::vector<std::wstring> wideFiles;
    EXPECT_EQ(FS::FindFilesExpandingEnvVars(std::string("%QUILLON_TEST_FOLDER%\\*.txt"), &files), 1u);
    EXPECT_EQ(FS::FindFilesExpandingEnvVars(std::wstring(L"%QUILLON_TEST_FOLDER%\\*.txt"), &wideFiles), 1u);
    EXPECT_THAT(files, ElementsAre(file));
    EXPECT_THAT(wideFiles, ElementsAre(folder + L"\\a.txt"));
}

}  // namespace
}  // namespace quillon::test
