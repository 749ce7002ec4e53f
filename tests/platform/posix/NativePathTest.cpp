#include "platform/native/NativePath.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <random>

#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/native/Wildcards.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "support/TempDir.h"

namespace quillon::platform {
namespace {

TEST(NativePath, IsTheSystemsNameOfALibraryPath) {
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {R"(C:\a\b)", "/a/b", "/mnt/a/b"},
        {R"(c:/a)", "/a", "/mnt/a"},
        {"C:\\", "/", "/mnt/"},
        {R"(\a)", "/a", "/mnt/a"},
        {R"(C:a\b)", "a/b", "a/b"},
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

TEST(NativePath, EveryNameOfTheSystemHasOneOfTheLibrary) {
    const std::pair<std::string, std::string> cases[] = {
        {"plain \xC3\xA9.txt", "plain \xC3\xA9.txt"},
        {"\xEF\xBC\xA1", "\xEF\xBC\xA1"},  // U+FF21 begins as an escape does
        {"..\\victim", "..\xEF\x81\x9Cvictim"},
        {"a\xFF"
         "b\xC3",
         "a\xEF\x83\xBF"
         "b\xEF\x83\x83"},
        {"\xEF\x81\x9C", "\xEF\x83\xAF\xEF\x82\x81\xEF\x82\x9C"},  // looks like an escape
        {"\xEF\x82", "\xEF\x83\xAF\xEF\x82\x82"},
        {"\xEF\x80\xAF", "\xEF\x80\xAF"},  // U+F02F never becomes a slash
    };
    for (const auto& [native, library] : cases) {
        EXPECT_EQ(LibraryName(native), library) << library;
        EXPECT_EQ(NativeElement(library), native) << library;
        EXPECT_EQ(NativePath("C:\\d\\" + library), "/d/" + native) << library;
        EXPECT_EQ(LibraryPath("/d/" + native), "C:\\d\\" + library) << library;
    }
    std::mt19937 random(7);
    const std::string bytes = "\\.a\xEF\x80\x81\x82\x83\x9C\xAF\xBF\xFF\xC3";
    for (int i = 0; i < 20'000; ++i) {
        std::string native;
        for (std::size_t n = 1 + random() % 9; n > 0; --n) native += bytes[random() % bytes.size()];
        const std::string library = LibraryName(native);
        ASSERT_EQ(library.find('\\'), std::string::npos);
        ASSERT_TRUE(base::FindInvalidUtf8(library) == std::string::npos) << library;
        ASSERT_EQ(NativeElement(library), native) << library;
    }
}

TEST(NativePath, NulIsRefused) {
    using namespace std::string_literals;
    EXPECT_EQ(NativePath("a\0b"s), std::nullopt);
    EXPECT_EQ(NativeName("\0"s), std::nullopt);
    EXPECT_EQ(NativeElement("\0"s), std::nullopt);
    EXPECT_EQ(NativeElement("a/b"), std::nullopt);
    EXPECT_EQ(errno, EILSEQ);
}

TEST(NativePath, WithoutADataFolderTheTemporaryOneTakesItsPart) {
    const test::TempDir dir;
    const DestructorFunctor unmount([] { SetVolumeRoot(""); });
    SetVolumeRoot(dir.Native().string());
    EXPECT_EQ(PathUtils::BuildFilenameRelativeToStaticDataDirectory("x.db"),
              *TemporaryFolder() + R"(Quillon\Client\x.db)");
}

TEST(Wildcards, FollowTheRulesOfTheWindowsSearch) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"????.log", "one.log", true}, {"*", "", true},           {"*.*", "bare", true},
        {"*.", "bare", true},          {"*.", "a.b", false},      {"a.*", "a", true},
        {"a?.b", "a.b", true},         {"?", "ab", false},        {"?.b", "aa.b", false},
        {"*.b", "a.b.b", true},        {"*.b", "b", false},       {"a*c", "abcbc", true},
        {"a*c", "abcb", false},        {"A*", "\xC3\xA9", false}, {"\xC3\x89*", "\xC3\xA9x", true},
        {"?", "\xE2\x82\xAC", true},   {"?*.*", ".a", true},      {"?*?.a", ".a", true},
        {"?*.a", ".a.b", false},       {"[a]", "a", false},       {"", "a", false},
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
