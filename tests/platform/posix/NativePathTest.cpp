#include "platform/native/NativePath.h"

#include <gtest/gtest.h>

#include "platform/FileApi.h"
#include "platform/posix/Wildcards.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "support/TempDir.h"

namespace quillon::platform {
namespace {

TEST(NativePath, IsTheSystemsNameOfALibraryPath) {
    const struct {
        std::string path, atRoot, mounted;
    } cases[] = {
        {R"(C:\a\b)", "/a/b", "/mnt/a/b"},
        {R"(c:/a)", "/a", "/mnt/a"},
        {"C:", "/", "/mnt/"},
        {"C:\\", "/", "/mnt/"},
        {R"(\a)", "/a", "/mnt/a"},
        {R"(C:a\b)", "a/b", "a/b"},
        {R"(a\b)", "a/b", "a/b"},
        {R"(/tmp\a)", "/tmp/a", "/tmp/a"},
        {R"(\\?\C:\a)", "/a", "/mnt/a"},
        {R"(\\?\HarddiskVolume1\a)", "/a", "/mnt/a"},
        {R"(D:\a)", "/nonexistent/D:/a", "/nonexistent/D:/a"},
        {R"(\\server\share)", "/nonexistent///server/share", "/nonexistent///server/share"},
        {"", "", ""},
    };
    const DestructorFunctor unmount([] { SetVolumeRoot(""); });
    for (const auto& [path, atRoot, mounted] : cases) {
        SetVolumeRoot("");
        EXPECT_EQ(NativePath(path), atRoot) << path;
        SetVolumeRoot("/mnt");
        EXPECT_EQ(NativePath(path), mounted) << path;
    }
    EXPECT_EQ(NativeName(R"(C:\a\\)"), "/mnt/a");
    EXPECT_EQ(LibraryPath("/mnt/a/b"), R"(C:\a\b)");
    EXPECT_EQ(LibraryPath("/mnt"), R"(C:\)");
    EXPECT_EQ(LibraryPath("/mntx/a"), "/mntx/a");  // not on the volume
    EXPECT_EQ(LibraryPath("a/b"), R"(a\b)");
}

TEST(NativePath, WithoutADataFolderTheTemporaryOneTakesItsPart) {
    const test::TempDir dir;
    const DestructorFunctor unmount([] { SetVolumeRoot(""); });
    SetVolumeRoot(dir.Native().string());
    EXPECT_EQ(PathUtils::BuildFilenameRelativeToStaticDataDirectory("x.db"),
              *TemporaryFolder() + R"(Quillon\Client\x.db)");
}

TEST(Wildcards, FollowTheRulesOfTheWindowsSearch) {
    const struct {
        const char *pattern, *name;
        bool matches;
    } cases[] = {
        {"????.log", "one.log", true},
        {"*", "", true},
        {"*.*", "bare", true},
        {"*.", "bare", true},
        {"*.", "a.b", false},
        {"bare.", "bare", true},
        {"a.*", "a", true},
        {"a.?", "a", true},
        {"a?.b", "a.b", true},
        {"?", "ab", false},
        {"a??", "a", true},
        {"?.b", "aa.b", false},
        {"*.b", "a.b.b", true},
        {"*.b", "b", false},
        {"a*c", "abcbc", true},
        {"a*c", "abcb", false},
        {"A*", "\xC3\xA9", false},
        {"\xC3\x89*", "\xC3\xA9x", true},
        {"?", "\xE2\x82\xAC", true},
        {"?*.*", ".a", true},
        {"?*.a", ".a", true},
        {"?*.a", "x.a", true},
        {"?*?.a", ".a", true},
        {"?*.a", ".a.b", false},
        {"?*a", ".a", true},
        {"**a**", "xax", true},
        {"[a]", "a", false},
        {"", "a", false},
    };
    for (const auto& [pattern, name, matches] : cases)
        EXPECT_EQ(MatchesWildcards(name, pattern), matches) << pattern << ' ' << name;
    // A pattern that makes a backtracking matcher take years.
    std::string stars;
    for (int i = 0; i < 100; ++i) stars += "*a";
    EXPECT_FALSE(MatchesWildcards(std::string(255, 'a') + "b", stars));
}

TEST(DevicePaths, NameTheVolume) {
    EXPECT_EQ(FileSystemUtils::TranslateNtPathToWin32Path(R"(\device\harddiskvolume1\Windows\x.exe)"),
              R"(C:\Windows\x.exe)");
    const test::TempDir dir;
    const std::string path = dir.Write("a", "12345");
    EXPECT_EQ(FileSystemUtils::GetFileSizeInBytes(R"(\Device\HarddiskVolume1)" + path.substr(2)), 5u);
}

}  // namespace
}  // namespace quillon::platform
