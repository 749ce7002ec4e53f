#include "quillon/PathUtils.h"

#include <gmock/gmock.h>

#include "support/System.h"

namespace quillon {
namespace {

TEST(PathUtilsCombinePaths, PutsExactlyOneSeparatorAtTheJoint) {
    const std::tuple<std::string, std::string, char, std::string> cases[] = {
        {"", "b", '\\', "b"},       {"a", "", '\\', "a"},
        {"a\\", "", '\\', "a\\"},   {"", "", '\\', ""},
        {"a\\", "b", '\\', "a\\b"}, {"a", "\\b", '\\', "a\\b"},
        {"a", "b", '/', "a/b"},     {"C:\\x\\\\", "\\y", '\\', "C:\\x\\\\y"},
        {"\\", "\\", '\\', "\\"},
    };
    for (const auto& [first, second, separator, expected] : cases)
        EXPECT_EQ(PathUtils::CombinePaths(first, second, separator), expected) << first + " and " + second;
    EXPECT_EQ(PathUtils::CombinePaths(L"a\\", L"\\b", L'\\'), L"a\\b");
    EXPECT_EQ(PathUtils::CombinePaths("C:", "x", "y", "z.txt", '\\'), "C:\\x\\y\\z.txt");
}

TEST(PathUtilsParts, SplitAtTheLastSeparator) {
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"C:\\a\\b", "C:\\a", "b", "b"},
        {"C:\\a\\", "C:\\a", "a", ""},
        {"C:\\", "C:", "C:", ""},
        {"C:", "", "C:", ""},
        {"C:\\a\\b\\\\\\", "C:\\a\\b\\\\", "b", ""},
        {"\\\\\\", "\\\\", "", ""},
        {"", "", "", ""},
        {"a/b", "", "a/b", ""},
    };
    for (const auto& [path, folder, base, file] : cases) {
        EXPECT_EQ(PathUtils::DirName(path, '\\'), folder) << path;
        EXPECT_EQ(PathUtils::BaseName(path, '\\'), base) << path;
        EXPECT_EQ(PathUtils::FileName(path), file) << path;
    }
    EXPECT_EQ(PathUtils::DirName(L"C:\\a\\b.txt", L'\\'), L"C:\\a");
    EXPECT_EQ(PathUtils::FileName(L"C:\\a\\b.txt"), L"b.txt");
    // Once per separator and call would end the stack.
    EXPECT_EQ(PathUtils::BaseName("a" + std::string(1'000'000, '\\'), '\\'), "a");
}

TEST(PathUtilsNormalise, IsLexicalAndTheSameOnEverySystem) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"C:/a/./b/../c/", "C:\\a\\c"},
        {"C:\\a\\b\\", "C:\\a\\b"},
        {"C:\\..\\x", "C:\\..\\x"},
        {"C:\\", "C:\\"},
        {"C:", "C:"},
        {"C:a\\..", "C:"},
        {"C:a\\.\\b", "C:a\\b"},
        {"a\\..", "."},
        {"a\\..\\..\\b", "..\\b"},
        {"\\\\server\\share\\x\\..\\y", "\\\\server\\share\\y"},
        {"\\\\?\\C:\\a\\..\\b", "\\\\?\\C:\\b"},
        {"C:\\\\a\\..\\b", "C:\\b"},
        {"\\\\?\\C:\\\\a\\..\\b", "\\\\?\\C:\\b"},
        {"a\\\\b\\\\..\\\\", "a"},
        {".\\a", ".\\a"},
        {"a\\.\\..\\.", "."},
        {"\\..\\..\\a", "\\..\\..\\a"},
        {"/", "\\"},
        {"C:\\invalid\xFF\\x\\..", "C:\\invalid\xFF"},
    };
    for (const auto& [given, expected] : cases) {
        SCOPED_TRACE(given);
        std::string path = given;
        EXPECT_EQ(&PathUtils::Normalise(path), &path);
        EXPECT_EQ(path, expected);
    }
    std::wstring wide = L"C:/\x20AC/../b/";
    EXPECT_EQ(PathUtils::Normalise(wide), L"C:\\b");
}

TEST(PathUtilsText, TheSystemsPathOfEverySpelling) {
    const char* const spellings[] = {R"(C:\etc\hosts)", R"(c:\etc/hosts)", R"(\\?\C:\etc\hosts)",
                                     R"(\etc\hosts)"};
    for (const std::string path : spellings)
        EXPECT_EQ(PathUtils::ToSystemPath(path), test::kWindows ? path : "/etc/hosts") << path;
    EXPECT_EQ(PathUtils::ToSystemPath("a.txt"), "a.txt");
}

TEST(PathUtilsText, IsMadeSafeByteByByte) {
    EXPECT_EQ(PathUtils::HomogeniseSlashesForOs("a/b\\c//"), "a\\b\\c\\\\");
    EXPECT_EQ(PathUtils::HomogeniseSlashesForOs(L"a/b"), L"a\\b");
    EXPECT_EQ(PathUtils::SanitizeTextForFilename("my file (1).txt"), "my_file__1__txt");
    EXPECT_EQ(PathUtils::SanitizeTextForFilename("\xC3\xA9Z0"), "__Z0");
    EXPECT_EQ(PathUtils::SanitizeTextForFilename(std::string("a-b\0c", 5)), "a_b");
}

TEST(PathUtilsFolders, LieBesideTheExecutableAndInTheDataOfAllUsers) {
    const std::string folder = PathUtils::GetExecutableDirectory();
    EXPECT_THAT(folder, testing::EndsWith("\\bin"));
    EXPECT_EQ(PathUtils::GetLibraryLocation(), folder + "\\Extensibility");
    EXPECT_EQ(PathUtils::GetLibraryLocation(), folder + "\\Extensibility");
    EXPECT_EQ(PathUtils::GetSSLCertsDirectory(), folder + "\\SSLCerts");
    const std::string data = PathUtils::BuildFilenameRelativeToStaticDataDirectory("x.db");
    EXPECT_THAT(data, testing::EndsWith("\\Quillon\\Client\\x.db"));
    EXPECT_EQ(PathUtils::BuildFilenameRelativeToDynamicDataDirectory("x.db"), data);
}

}  // namespace
}  // namespace quillon
