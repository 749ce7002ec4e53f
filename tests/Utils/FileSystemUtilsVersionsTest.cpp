#include <gmock/gmock.h>

#include <regex>

#include "quillon/FileSystemUtils.h"
#include "quillon/SelfMetrics.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "support/VersionedFile.h"

namespace quillon::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using FS = FileSystemUtils;
namespace fs = std::filesystem;

std::string Table(const std::string& table, const std::string& product) {
    return VersionNode(table, 0,
                       VersionText("ProductName", product) + VersionText("OriginalFilename", "x.exe"));
}

std::string FileOf(const std::string& product) {
    return PeFile(VersionBlock(Table("040904b0", product), Word(0x409) + Word(0x4B0)));
}

class VersionInformationTest : public TempDirTest {
protected:
    ~VersionInformationTest() override { FS::ClearVersionInformationCache(); }

    /// One call's log: a place in the source is "@", the path P, the last line the count of files.
    std::vector<std::string> LogOf(const std::string& language = {}) {
        log.Forget();
        answer = FS::GetVersionInformation(path, language);
        static const std::regex place(R"(^FileSystemUtilsVersions\.cpp @ \d+:)"), count(".*about (\\d).*");
        auto lines = log.Lines();
        for (std::string& line : lines) {
            line = std::regex_replace(line, place, "@");
            if (const auto at = line.find(path); at != std::string::npos) line.replace(at, path.size(), "P");
        }
        lines.back() = std::regex_replace(lines.back(), count, "$1");
        return lines;
    }
    void Write(const std::string& content, int second) const {
        const auto now = std::chrono::floor<std::chrono::hours>(fs::file_time_type::clock::now());
        dir.Write("x.exe", content);
        fs::last_write_time(dir.Native("x.exe"), now + std::chrono::seconds(second));
    }

    RecordingLogger log;
    const std::string path = dir.Path("x.exe");
    FS::VersionInformation answer;
};

TEST_F(VersionInformationTest, EveryStepIsLoggedInItsOrder) {
    const char* const known = "@ 'P' is already in the cache";
    const char* const unchanged = "@ 'P' has not changed, so using the cached info";
    const char* const getting = "@ Getting version info about 'P'";
    Write(FileOf("old"), 0);
    EXPECT_THAT(LogOf(), ElementsAre("@ 'P' is not already in the cache", getting,
                                     "Caching version info about 'P' for language ''", "1"));
    EXPECT_EQ(answer, (FS::VersionInformation{"10.0.19041.1", "1.2.65535.4", "", "old", "x.exe"}));
    const std::string stamps = LogOf()[1];
    EXPECT_THAT(stamps, testing::MatchesRegex("    File timestamp is .+Z, cached timestamp is .+Z"));
    EXPECT_THAT(LogOf(),
                ElementsAre(known, stamps, unchanged, "@ Info for language '' already in the cache", "1"));
    EXPECT_THAT(LogOf("0409"), ElementsAre(known, stamps, unchanged, getting,
                                           "Adding version info about 'P' for language '0409'", "1"));
    Write(FileOf("new"), 0);  // within the second
    EXPECT_THAT(LogOf("\xFF"), Contains("@ Info for language '' already in the cache"));
    EXPECT_EQ(answer.productName, "old");
    Write(FileOf("new"), 1);
    EXPECT_THAT(LogOf(), ElementsAre(known, testing::Ne(stamps), getting,
                                     "Replacing cached version info about 'P'", "1"));
    EXPECT_EQ(answer.productName, "new");
    EXPECT_EQ(LogOf("0409")[4], "Adding version info about 'P' for language '0409'");
    fs::remove(dir.Native("x.exe"));
    fs::create_directory(dir.Native("x.exe"));
    EXPECT_THAT(LogOf(), ElementsAre("@ 'P' does not exist so no version info", "0"));
    EXPECT_EQ(answer, FS::VersionInformation());
}

TEST_F(VersionInformationTest, TheTextOfALanguageIsFound) {
    const std::string neutral = Word(0) + Word(0x4B0), german = Word(0x407) + Word(0x4E4),
                      en = Table("040904B0", "en");
    const std::string empty = Table("000004b0", std::string("\0\r", 2));
    const std::string controls = Table("040904b0", std::string(" a\0\x7F\tb ", 8));
    const struct {
        std::string tables, languages, language, expected;
    } cases[] = {
        {en, neutral, "", "en"},
        {en + Table("000004b0", "own"), neutral, "", "own"},
        {empty + Table("040704e4", "de"), neutral + german, "", "de"},
        {Table("040904E4", "en"), german + neutral, "0409", "en"},  // the first one's code page
        {Table("040c04b0", "fr"), neutral, "040C", "fr"},
        {en, german + neutral, "0409", ""},
        {en, "", "0409", ""},
        {en, Word(0x409), "", ""},  // half a language
        {controls, neutral, "", " ab "},
    };
    for (const auto& c : cases) {
        const auto number = std::to_string(&c - cases);
        const std::string file = dir.Write(number, PeFile(VersionBlock(c.tables, c.languages)));
        EXPECT_EQ(FS::GetVersionInformation(file, c.language).productName, c.expected) << number;
    }
    std::string invalid = FileOf("~");
    invalid.replace(invalid.find(Units("~")), 2, "\1\xD8");
    Write(invalid, 0);
    EXPECT_EQ(LogOf()[2], "Invalid wide string for conversion to narrow");
    EXPECT_EQ(answer.productName + answer.originalFilename, "x.exe");
}

TEST_F(VersionInformationTest, FilesWithoutOneAreKeptThoseThatCannotBeReadAreNot) {
    const std::string good = FileOf("x"), other = VersionBlock("", "", 0xFEEF04BC),
                      none = "@ 'P' has no version info";
    const struct {
        const char* what;
        std::string content;
        const char* kept;
        std::string line;
    } cases[] = {
        {"empty", "", "1", none},
        {"header beyond the end", Patched(good, 60, "\xFF\xFF\xFF\xFF"), "1", none},
        {"another signature", PeFile(other), "0", "Version info of 'P' does not have the expected signature"},
        {"short fixed part", PeFile(Patched(other, 2, Word(51))), "0", "Could not query version of 'P'"},
        {"cut", good.substr(0, good.size() - 9), "0", "Could not get version of 'P' because: (1812/0X714) "}};
    for (int second = 0; const auto& [what, content, kept, line] : cases) {
        SCOPED_TRACE(what);
        if (kWindows && line.ends_with(' ')) continue;  // the systems disagree about what a cut file has
        Write(good, ++second);
        LogOf("0409");
        Write(content, ++second);
        const auto lines = LogOf();
        EXPECT_THAT(lines, Contains(testing::StartsWith(line)));
        EXPECT_TRUE(lines.back() == kept && answer == FS::VersionInformation());
    }
}

TEST_F(VersionInformationTest, RelativePathIsThatOfTheWorkingDirectory) {
    dir.Write("quillon.dll", FileOf("own"));
    const std::string before = FS::GetWorkingDirectory();
    ASSERT_TRUE(FS::SetWorkingDirectory(dir.Path()));
    EXPECT_EQ(FS::GetVersionInformation("quillon.dll", "").productName, "own");
    EXPECT_TRUE(FS::SetWorkingDirectory(before));
}

TEST_F(VersionInformationTest, EightThreadsAskForManyPaths) {
    constexpr int kThreads = 8, kPaths = (kWindows ? 10'000 : 100'000) / QUILLON_TEST_SLOWDOWN;
    ServiceLocator::Remove<ICLogger>();  // it would keep half a million lines
    Write(FileOf("x"), 0);
    if (!kWindows) fs::resize_file(dir.Native("x.exe"), 5ULL << 30);  // the emulator's are not sparse
    fs::create_directory(dir.Native("d"));
    Threads(kThreads, [this](int t) {
        for (int i = t / 2; i < kPaths; i += kThreads / 2) {  // each path twice
            std::string name = dir.Path();
            for (int bits = i; bits > 0; bits /= 2) name += bits % 2 != 0 ? "\\." : "\\d\\..";
            EXPECT_EQ(FS::GetVersionInformation(name + "\\x.exe", "").productName, "x");
        }
    }).Join();
    std::ostringstream figures;
    for (const VariantList& row : SelfMetrics()) figures << row;
    EXPECT_THAT(figures.str(),
                testing::HasSubstr("Cache.VersionInformation, Value=" + std::to_string(kPaths)));
}

}  // namespace
}  // namespace quillon::test
