#include <gmock/gmock.h>
#include <sys/stat.h>

#include "host/Host.h"
#include "quillon/DataTableIO.h"
#include "quillon/StringUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "system/Sha256.h"

namespace quillon::test {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string HashOf(const std::string& content) {
    agent::Sha256 hash;
    hash.Add(content.data(), content.size());
    return hash.Finish();
}

std::string Line(const std::string& name, const std::string& content) {
    return '"' + name + "\" ln=" + std::to_string(content.size()) + " dt=0x1d2 CRC=" + HashOf(content) + '\n';
}

agent::AgentConfiguration Enabled(bool isEnabled) {
    agent::AgentSettings settings;
    settings.wayfarEnabled = isEnabled;
    return agent::AgentConfiguration(settings);
}

/// A package in "source", its list, and the agent that downloads it into "to".
class ContentTest : public TempDirTest {
protected:
    explicit ContentTest(bool isEnabled = true)
        : m_host({"", ICLogger::Level::Fatal}, dir.Path("stores"), Enabled(isEnabled)) {}

    std::string Url(const std::string& name) const {
        const std::string path = dir.Native(name).generic_string();
        return (path.starts_with('/') ? "file://" : "file:///") + path;
    }

    /// Code, message and table.
    std::string Run(const std::string& method, const std::vector<std::string>& arguments) {
        const InvocationResult result = m_host.Run(method, arguments);
        std::string text = ToCsv(result.resultTable);
        std::erase(text, '\r');
        return std::to_string(result.resultCode) + '|' + result.errorMessage + '|' + text;
    }

    std::string Download(const std::string& lines) {
        dir.Write("list", lines + "; List Complete - 1\n");
        return Run("Content.Download",
                   {"listUrl=" + Url("list"), "folderUrl=" + Url("source"), "folder=" + dir.Path("to")});
    }

    std::string DownloadFile(const std::string& name, const std::string& size, const std::string& hash) {
        return Run("Content.DownloadFile", {"url=" + Url("source/" + name), "path=" + dir.Path("to/" + name),
                                            "size=" + size, "hash=" + hash});
    }

    /// Files and folders below "to".
    std::size_t CountDownloaded() const {
        const auto all = std::filesystem::recursive_directory_iterator(dir.Native("to"));
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    agent::Host m_host;
};

struct DisabledContentTest : ContentTest {
    DisabledContentTest() : ContentTest(false) {}
};

}  // namespace

TEST_F(ContentTest, DownloadsAFolderThroughTheWrapper) {
    const std::string large(3'000'000, 'x');
    dir.Write("source/a.txt", "alpha");
    dir.Write("source/sub/deep/b.bin", large);
    dir.Write("source/empty", "");
    dir.Write("to/a.txt", "old");
    EXPECT_EQ(HashOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Download("\".\\.\"\n" + Line("a.txt", "alpha") + Line(".\\sub\\deep\\b.bin", large) +
                       Line("empty", "")),
              "0||Name,Size,Fault\na.txt,5,\nsub\\deep\\b.bin,3000000,\nempty,0,\n");
    EXPECT_EQ(dir.Read("to/a.txt"), "alpha");
    EXPECT_EQ(dir.Read("to/sub/deep/b.bin"), large);
    EXPECT_EQ(CountDownloaded(), 5u);  // and nothing temporary
    EXPECT_THAT(Run("Content.ReadList", {"path=" + dir.Path("list"), "summary=true"}),
                StartsWith("0||Version,BlockSize,Hash,Entries,ListSize\n1,0,,4,"));
}

TEST_F(ContentTest, AFileThatDiffersIsToldAndTheOthersAreDownloaded) {
    for (const char* const name : {"longer", "shorter", "changed", "good"})
        dir.Write(std::string("source/") + name, "12345");
    dir.Write("to/changed", "old");
    dir.Write("to/good/is/a folder", "");
    dir.Write("source/sub", "");
    const std::string result =
        Download(Line("longer", "1234") + Line("shorter", "123456") + Line("changed", "54321") +
                 Line("missing", "") + Line("good", "12345") + Line("sub\\x", "") + Line("last/good", "1"));
    EXPECT_THAT(result, StartsWith("7|7 of 7 files could not be downloaded; the first: 'longer' is longer"));
    for (const std::string fault :
         {"\nshorter,6,has 5 bytes instead of 6\n", "\nchanged,5,has another SHA-256\n",
          "\nmissing,0,cannot be read: ", "\ngood,5,cannot be written: "})
        EXPECT_THAT(result, HasSubstr(fault)) << fault;
    EXPECT_EQ(dir.Read("to/changed"), "old");
    dir.Write("source/last/good", "1");
    EXPECT_THAT(Download(Line("missing", "") + Line("last/good", "1")), StartsWith("3|1 of 2 files"));
    EXPECT_EQ(dir.Read("to/last/good"), "1");
    EXPECT_EQ(CountDownloaded(), 6u);
}

TEST_F(ContentTest, AListWithOneBadEntryIsRefusedWhole) {
    dir.Write("source/a", "alpha");
    const std::string good = Line("a", "alpha");
    const std::pair<std::string, std::string> cases[] = {
        {Line("..\\evil", "x"), "its file '..\\evil' has a component"},
        {Line("a\x1B[2J", "x"), "its file 'a\\x1B[2J' has a character"},
        {Line("A", "alpha"), "its file 'A' is there twice"},
        {"\"b\" ln=1 dt=0 CRC=12345678\n", "its file 'b' has no SHA-256"},
        {"\"b\" ln=1 dt=0\n", "has no SHA-256"},
        {"; Wrong\n", "cannot be read or is not complete"},
    };
    for (const auto& [line, fault] : cases) {
        SCOPED_TRACE(line);
        const std::string result = Download(good + line);
        EXPECT_THAT(result, StartsWith("6|The list '"));
        EXPECT_THAT(result, HasSubstr(fault));
    }
    std::string many;
    for (int i = 0; i < 100'000 / QUILLON_TEST_SLOWDOWN; ++i) {
        many += "\"f" + std::to_string(i) + "\" ln=0 dt=0 CRC=" + std::string(64, '0') + '\n';
        if (i == 7000) many += Line("/etc/passwd", "x");
    }
    EXPECT_THAT(Download(many), HasSubstr("'/etc/passwd' has an empty component"));
    EXPECT_FALSE(dir.Exists("to"));
}

TEST_F(ContentTest, WritesThroughNoLink) {
    // The emulator's C++ library makes no links.
    if (kWindows) GTEST_SKIP() << "no links can be made";
    namespace fs = std::filesystem;
    dir.Write("source/sub/a", "alpha");
    dir.Write("source/b", "beta");
    dir.Write("outside/b", "old");
    fs::create_directory(dir.Native("to"));
    fs::create_directory_symlink(dir.Native("outside"), dir.Native("to/sub"));
    fs::create_symlink(dir.Native("outside/b"), dir.Native("to/b"));
    EXPECT_THAT(Download(Line("sub\\a", "alpha") + Line("b", "beta")),
                HasSubstr("\nsub\\a,5,cannot be written: a link or a file stands in the place"));
    EXPECT_FALSE(dir.Exists("outside/a"));
    EXPECT_EQ(dir.Read("outside/b"), "old");
    EXPECT_EQ(dir.Read("to/b"), "beta");
    ASSERT_EQ(std::system(("mkfifo '" + dir.Native("source/pipe").string() + '\'').c_str()), 0);
    EXPECT_THAT(Download(Line("pipe", "")), HasSubstr("not a regular file"));
}

TEST_F(ContentTest, WhatItMakesBelongsToItsOwner) {
    if (kWindows) GTEST_SKIP() << "folders inherit their rights there";
    dir.Write("source/sub/a", "alpha");
    const auto before = ::umask(0);
    EXPECT_THAT(Download(Line("sub\\a", "alpha")), StartsWith("0|"));
    ::umask(before);
    const auto modeOf = [&](const char* name) {
        return std::filesystem::status(dir.Native(name)).permissions();
    };
    EXPECT_EQ(modeOf("to"), std::filesystem::perms::owner_all);
    EXPECT_EQ(modeOf("to/sub"), std::filesystem::perms::owner_all);
}

TEST_F(ContentTest, WhatIsThereAlreadyIsNotCopiedAgain) {
    std::string lines;
    for (int i = 0; i < 250; ++i) {  // more than are put in place at once
        const std::string name = "sub" + std::to_string(i % 3) + '/' + std::to_string(i);
        dir.Write("source/" + name, "content of " + name);
        lines += Line(name, "content of " + name);
    }
    EXPECT_THAT(Download(lines), StartsWith("0|"));
    EXPECT_EQ(CountDownloaded(), 253u);
    std::filesystem::remove_all(dir.Native("source"));
    EXPECT_THAT(Download(lines), StartsWith("0|"));
    dir.Write("to/sub1/1", "content of other");
    dir.Write("to/sub2/2", "content of sub2/2 and more");
    EXPECT_THAT(Download(lines),
                StartsWith("3|2 of 250 files could not be downloaded; the first: 'sub1\\1' "));
    EXPECT_EQ(dir.Read("to/sub1/1"), "content of other");
    if (kWindows) return;  // which makes no links here
    std::filesystem::rename(dir.Native("to/sub0/0"), dir.Native("elsewhere"));
    std::filesystem::create_symlink(dir.Native("elsewhere"), dir.Native("to/sub0/0"));
    EXPECT_THAT(Download(lines), StartsWith("3|3 of 250 files"));
}

TEST_F(ContentTest, DownloadsOneFileOrLeavesNothing) {
    dir.Write("source/a", "alpha");
    const std::string hash = StringUtils::ToUppercase(HashOf("alpha"));
    EXPECT_THAT(DownloadFile("a", "5", HashOf("other")), StartsWith("3|Could not download"));
    EXPECT_THAT(DownloadFile("a", "4", hash), StartsWith("3|"));
    EXPECT_THAT(DownloadFile("a", "-1", hash), StartsWith("3|"));
    EXPECT_EQ(CountDownloaded(), 0u);
    EXPECT_THAT(DownloadFile("a", "5", hash), StartsWith("0||Path,Size\n"));
    EXPECT_EQ(dir.Read("to/a"), "alpha");
}

TEST_F(ContentTest, ShutdownEndsItBetweenTwoPieces) {
    const std::string large(5'000'000, 'x');
    dir.Write("source/a", "alpha");
    dir.Write("source/large", large);
    int looks = 0;
    const Monitor monitor([&looks] { return ++looks > 5; });
    EXPECT_THAT(Download(Line("a", "alpha") + Line("large", large)),
                StartsWith("3|Aborted due to Agent shutdown|"));
    EXPECT_TRUE(dir.Exists("to/a"));
    EXPECT_EQ(CountDownloaded(), 1u);
    EXPECT_THAT(Download(Line("a", "alpha")), StartsWith("3|No download may begin now|"));
}

TEST_F(DisabledContentTest, NothingIsDownloaded) {
    EXPECT_EQ(Download(Line("a", "")), "3|Downloads are not enabled in the agent's configuration|");
    EXPECT_THAT(DownloadFile("a", "0", HashOf("")), StartsWith("3|Downloads are not enabled"));
    EXPECT_FALSE(dir.Exists("to"));
}

}  // namespace quillon::test
