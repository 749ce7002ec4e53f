#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <thread>

#include "quillon/FileSystemUtils.h"
#include "quillon/SelfMetrics.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/VersionedFile.h"

namespace quillon::test {
namespace {

using testing::ElementsAre;
using testing::IsSupersetOf;
using FS = FileSystemUtils;
using Level = RecordingLogger::Level;
using Information = FS::VersionInformation;

const std::string kUnicode = Word(0x4B0);

std::string Table(const std::string& table, const std::string& product) {
    return VersionNode(table, 0,
                       VersionText("FileDescription", "About") + VersionText("ProductName", product) +
                           VersionText("OriginalFilename", "x.exe"));
}

std::string FileOf(const std::string& tables, const std::string& languages) {
    return PeFile(VersionBlock(tables, languages));
}

const std::string kEnglish = FileOf(Table("040904b0", "English"), Word(0x409) + kUnicode);

class VersionInformationTest : public TempDirTest {
protected:
    VersionInformationTest() { FS::ClearVersionInformationCache(); }
    ~VersionInformationTest() override { FS::ClearVersionInformationCache(); }

    /// The log of one call, a place in the source as "@".
    std::vector<std::string> LogOf(const std::string& path, const std::string& language = {}) {
        log.Forget();
        answer = FS::GetVersionInformation(path, language);
        static const std::regex place(R"(^FileSystemUtilsVersions\.cpp @ \d+:)");
        auto lines = log.Lines();
        for (std::string& line : lines) line = std::regex_replace(line, place, "@");
        return lines;
    }
    void SetTime(const std::string& name, int second) const {
        std::filesystem::last_write_time(dir.Native(name), when + std::chrono::seconds(second));
    }

    RecordingLogger log;
    Information answer;
    const std::filesystem::file_time_type when =
        std::chrono::floor<std::chrono::seconds>(std::filesystem::file_time_type::clock::now()) -
        std::chrono::hours(1);
};

std::string Count(int files) {
    return "@ There is is now information about " + std::to_string(files) +
           " file(s) in the version info cache";
}

TEST_F(VersionInformationTest, EveryStepIsLoggedInItsOrder) {
    const std::string path = dir.Write("x.exe", kEnglish), quoted = "'" + path + "'";
    SetTime("x.exe", 0);
    const std::string known = "@ " + quoted + " is already in the cache",
                      getting = "@ Getting version info about " + quoted;
    const std::string unchanged = "@ " + quoted + " has not changed, so using the cached info";
    EXPECT_THAT(LogOf(""), ElementsAre("GetVersionInformation: empty filePath"));
    EXPECT_THAT(LogOf(path),
                ElementsAre("@ " + quoted + " is not already in the cache", getting,
                            "Caching version info about " + quoted + " for language ''", Count(1)));
    EXPECT_EQ(answer, (Information{"10.0.19041.1", "1.2.65535.4", "About", "English", "x.exe"}));
    const std::string stamps = LogOf(path)[1];
    EXPECT_TRUE(
        std::regex_match(stamps, std::regex(R"(    File timestamp is (\S{24}), cached timestamp is \1)")))
        << stamps;
    EXPECT_THAT(LogOf(path), ElementsAre(known, stamps, unchanged,
                                         "@ Info for language '' already in the cache", Count(1)));
    EXPECT_THAT(LogOf(path, "0409"),
                ElementsAre(known, stamps, unchanged, getting,
                            "Adding version info about " + quoted + " for language '0409'", Count(1)));
    dir.Write("x.exe", FileOf(Table("040904b0", "Newer"), Word(0x409) + kUnicode));
    SetTime("x.exe", 0);  // within the second
    LogOf(path, "0409");
    EXPECT_EQ(answer.productName, "English");
    SetTime("x.exe", 1);
    EXPECT_THAT(LogOf(path), ElementsAre(known, testing::Ne(stamps), getting,
                                         "Replacing cached version info about " + quoted, Count(1)));
    EXPECT_EQ(answer.productName, "Newer");
    EXPECT_EQ(LogOf(path, "0409")[4], "Adding version info about " + quoted + " for language '0409'");
    std::filesystem::remove(dir.Native("x.exe"));
    std::filesystem::create_directory(dir.Native("x.exe"));
    EXPECT_THAT(LogOf(path), ElementsAre("@ " + quoted + " does not exist so no version info", Count(0)));
    EXPECT_EQ(answer, Information());
}

TEST_F(VersionInformationTest, TheTextOfALanguageIsFound) {
    const std::string neutral = Word(0) + kUnicode, german = Word(0x407) + Word(0x4E4);
    const std::string empty = Table("000004b0", std::string("\0\r", 2));
    const struct {
        const char* what;
        std::string tables, languages, language, expected;
    } cases[] = {
        {"neutral, stored as US English", Table("040904B0", "en"), neutral, "", "en"},
        {"neutral has its own", Table("040904b0", "en") + Table("000004b0", "own"), neutral, "", "own"},
        {"neutral is empty, the next is not", empty + Table("040704e4", "de"), neutral + german, "", "de"},
        {"not where nothing says so", Table("040904b0", "en"), german, "", ""},
        {"the given one, the first code page", Table("040904E4", "en"), german + neutral, "0409", "en"},
        {"the given one in capitals", Table("040c04b0", "fr"), neutral, "040C", "fr"},
        {"the given one with another code page", Table("040904b0", "en"), german + neutral, "0409", ""},
        {"no table of languages", Table("040904b0", "en"), "", "0409", ""},
        {"half a language", Table("040904b0", "en"), Word(0x409), "", ""},
        {"control characters", Table("040904b0", std::string(" a\0\x7F\tb ", 8)), neutral, "", " ab "},
    };
    for (const auto& c : cases) {
        const std::string path = dir.Write(c.what, FileOf(c.tables, c.languages));
        EXPECT_EQ(FS::GetVersionInformation(path, c.language).productName, c.expected) << c.what;
    }
    const std::string lone = std::string("p\0", 2) + std::string("\0\xD8", 2);
    std::string invalid = kEnglish;
    invalid.replace(invalid.find(Units("English")), lone.size(), lone);
    EXPECT_THAT(LogOf(dir.Write("invalid", invalid)),
                testing::Contains("Invalid wide string for conversion to narrow"));
    EXPECT_EQ(answer.productName + answer.originalFilename, "x.exe");
    EXPECT_THAT(LogOf(dir.Path("invalid"), "\xFF"),
                testing::Contains("@ Info for language '' already in the cache"));
}

TEST_F(VersionInformationTest, FilesWithoutOneAreKeptThoseThatCannotBeReadAreNot) {
    const std::string path = dir.Path("x.exe"), quoted = "'" + path + "'";
    const std::string signature = VersionBlock("", "", 0xFEEF04BC);
    const std::string none = "@ " + quoted + " has no version info",
                      query = "Could not query version of " + quoted;
    struct Case {
        std::string content, logged;
        int kept;
    };
    std::vector<Case> cases = {
        {"", none, 1},
        {"MZ", none, 1},
        {Patched(kEnglish, 60, "\xFF\xFF\xFF\xFF"), none, 1},
        {PeFile(signature), "Version info of " + quoted + " does not have the expected signature", 0},
        {PeFile(Patched(signature, 2, Word(51))), query, 0},
    };
    if (!kWindows) {  // the systems disagree about what such a file has
        cases.push_back(
            {kEnglish.substr(0, kEnglish.size() - 9),
             "Could not get version of " + quoted +
                 " because: (1812/0X714) The specified image file did not contain a resource section. ",
             0});
    }
    for (int second = 0; const auto& c : cases) {
        dir.Write("x.exe", kEnglish);
        SetTime("x.exe", ++second);
        LogOf(path, "0409");
        dir.Write("x.exe", c.content);
        SetTime("x.exe", ++second);
        EXPECT_THAT(LogOf(path), IsSupersetOf({c.logged, Count(c.kept)}));
        EXPECT_EQ(answer, Information());
    }
}

TEST_F(VersionInformationTest, ABigSparseFileIsReadWhereItsResourceIs) {
    if (kWindows) GTEST_SKIP() << "the emulator's files are not sparse";
    const std::string path = dir.Write("x.exe", kEnglish);
    std::filesystem::resize_file(dir.Native("x.exe"), 5ULL << 30);
    EXPECT_EQ(FS::GetVersionInformation(path, "").productName, "English");
}

TEST_F(VersionInformationTest, EightThreadsAskForManyPaths) {
    constexpr unsigned kThreads = 8, kPaths = 100'000 / QUILLON_TEST_SLOWDOWN;
    ServiceLocator::Remove<ICLogger>();  // it would keep half a million lines
    dir.Write("x.exe", kEnglish);
    std::filesystem::create_directory(dir.Native("d"));
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (unsigned i = t / 2; i < kPaths; i += kThreads / 2) {  // each path twice
                std::string name = dir.Path();
                for (unsigned bits = i; bits > 0; bits /= 2) name += bits % 2 != 0 ? "\\." : "\\d\\..";
                EXPECT_EQ(FS::GetVersionInformation(name + "\\x.exe", "").productName, "English");
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (const VariantList& row : SelfMetrics()) {
        if (row["Name"].GetStringValue() == "Cache.VersionInformation") {
            EXPECT_EQ(row["Value"].GetLongLongValue(), kPaths);
            return;
        }
    }
    FAIL() << "the cache does not tell its size";
}

}  // namespace
}  // namespace quillon::test
