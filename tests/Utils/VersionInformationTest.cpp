#include <gmock/gmock.h>

#include <regex>
#include <thread>

#include "quillon/FileSystemUtils.h"
#include "quillon/SelfMetrics.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/VersionedFile.h"

namespace quillon::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using FS = FileSystemUtils;
using Information = FS::VersionInformation;
namespace fs = std::filesystem;

const std::string kUnicode = Word(0x4B0);

std::string Table(const std::string& table, const std::string& product) {
    return VersionNode(table, 0,
                       VersionText("FileDescription", "About") + VersionText("ProductName", product) +
                           VersionText("OriginalFilename", "x.exe"));
}

std::string FileOf(const std::string& product) {
    return PeFile(VersionBlock(Table("040904b0", product), Word(0x409) + kUnicode));
}

class VersionInformationTest : public TempDirTest {
protected:
    VersionInformationTest() { FS::ClearVersionInformationCache(); }

    /// The log of one call; a place in the source is "@", the path P, the count of files left out.
    std::vector<std::string> LogOf(const std::string& language = {}) {
        log.Forget();
        answer = FS::GetVersionInformation(path, language);
        static const std::regex place(R"(^FileSystemUtilsVersions\.cpp @ \d+:)");
        auto lines = log.Lines();
        for (std::string& line : lines) {
            line = std::regex_replace(line, place, "@");
            if (const auto at = line.find(path); at != std::string::npos) line.replace(at, path.size(), "P");
        }
        EXPECT_EQ(lines.back(), "@ There is is now information about " + std::to_string(kept) +
                                    " file(s) in the version info cache");
        lines.pop_back();
        return lines;
    }
    /// A new file, changed at this second.
    void Write(const std::string& content, int second) const {
        dir.Write("x.exe", content);
        fs::last_write_time(dir.Native("x.exe"), when + std::chrono::seconds(second));
    }

    RecordingLogger log;
    const std::string path = dir.Path("x.exe");
    int kept = 1;
    Information answer;
    const fs::file_time_type when =
        std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now()) - std::chrono::hours(1);
};

TEST_F(VersionInformationTest, EveryStepIsLoggedInItsOrder) {
    const char* const known = "@ 'P' is already in the cache";
    const char* const unchanged = "@ 'P' has not changed, so using the cached info";
    const char* const getting = "@ Getting version info about 'P'";
    Write(FileOf("English"), 0);
    EXPECT_THAT(LogOf(), ElementsAre("@ 'P' is not already in the cache", getting,
                                     "Caching version info about 'P' for language ''"));
    EXPECT_EQ(answer, (Information{"10.0.19041.1", "1.2.65535.4", "About", "English", "x.exe"}));
    const std::string stamps = LogOf()[1];
    EXPECT_TRUE(
        std::regex_match(stamps, std::regex(R"(    File timestamp is (\S{24}), cached timestamp is \1)")));
    EXPECT_THAT(LogOf(),
                ElementsAre(known, stamps, unchanged, "@ Info for language '' already in the cache"));
    EXPECT_THAT(LogOf("0409"), ElementsAre(known, stamps, unchanged, getting,
                                           "Adding version info about 'P' for language '0409'"));
    Write(FileOf("Newer"), 0);  // within the second
    EXPECT_THAT(LogOf("\xFF"), Contains("@ Info for language '' already in the cache"));
    EXPECT_EQ(answer.productName, "English");
    Write(FileOf("Newer"), 1);
    EXPECT_THAT(LogOf(),
                ElementsAre(known, testing::Ne(stamps), getting, "Replacing cached version info about 'P'"));
    EXPECT_EQ(answer.productName, "Newer");
    EXPECT_EQ(LogOf("0409")[4], "Adding version info about 'P' for language '0409'");
    fs::remove(dir.Native("x.exe"));
    fs::create_directory(dir.Native("x.exe"));
    kept = 0;
    EXPECT_THAT(LogOf(), ElementsAre("@ 'P' does not exist so no version info"));
    EXPECT_EQ(answer, Information());
}

TEST_F(VersionInformationTest, TheTextOfALanguageIsFound) {
    const std::string neutral = Word(0) + kUnicode, german = Word(0x407) + Word(0x4E4),
                      english = Table("040904B0", "en");
    const std::string empty = Table("000004b0", std::string("\0\r", 2));
    const struct {
        const char* what;
        std::string tables, languages, language, expected;
    } cases[] = {
        {"neutral, stored as US English", english, neutral, "", "en"},
        {"neutral has its own", english + Table("000004b0", "own"), neutral, "", "own"},
        {"neutral is empty, the next is not", empty + Table("040704e4", "de"), neutral + german, "", "de"},
        {"the given one, the first code page", Table("040904E4", "en"), german + neutral, "0409", "en"},
        {"the given one in capitals", Table("040c04b0", "fr"), neutral, "040C", "fr"},
        {"the given one, another code page", english, german + neutral, "0409", ""},
        {"no table of languages", english, "", "0409", ""},
        {"half a language", english, Word(0x409), "", ""},
        {"control characters", Table("040904b0", std::string(" a\0\x7F\tb ", 8)), neutral, "", " ab "},
    };
    for (const auto& c : cases) {
        const std::string file = dir.Write(c.what, PeFile(VersionBlock(c.tables, c.languages)));
        EXPECT_EQ(FS::GetVersionInformation(file, c.language).productName, c.expected) << c.what;
    }
    kept = 1 + static_cast<int>(std::size(cases));
    std::string invalid = FileOf("English");
    invalid.replace(invalid.find(Units("English")), 2, "\x01\xD8");
    Write(invalid, 0);
    EXPECT_EQ(LogOf()[2], "Invalid wide string for conversion to narrow");
    EXPECT_EQ(answer.productName + answer.originalFilename, "x.exe");
}

TEST_F(VersionInformationTest, FilesWithoutOneAreKeptThoseThatCannotBeReadAreNot) {
    const std::string good = FileOf("x"), other = VersionBlock("", "", 0xFEEF04BC);
    const struct {
        std::string content;
        int kept;
        std::string line;
    } cases[] = {{"", 1, "@ 'P' has no version info"},
                 {"MZ", 1, "@ 'P' has no version info"},
                 {Patched(good, 60, "\xFF\xFF\xFF\xFF"), 1, "@ 'P' has no version info"},
                 {PeFile(other), 0, "Version info of 'P' does not have the expected signature"},
                 {PeFile(Patched(other, 2, Word(51))), 0, "Could not query version of 'P'"},
                 {good.substr(0, good.size() - 9), 0, "Could not get version of 'P' because: (1812/0X714) "}};
    for (int second = 0; const auto& c : cases) {
        if (kWindows && c.line.ends_with(' ')) continue;  // the systems disagree about what a cut file has
        Write(good, ++second);
        kept = 1;
        LogOf("0409");
        Write(c.content, ++second);
        kept = c.kept;
        EXPECT_THAT(LogOf(), Contains(testing::StartsWith(c.line)));
        EXPECT_EQ(answer, Information());
    }
}

TEST_F(VersionInformationTest, EightThreadsAskForManyPaths) {
    constexpr unsigned kThreads = 8, kPaths = 100'000 / QUILLON_TEST_SLOWDOWN;
    ServiceLocator::Remove<ICLogger>();  // it would keep half a million lines
    Write(FileOf("x"), 0);
    if (!kWindows) fs::resize_file(dir.Native("x.exe"), 5ULL << 30);  // the emulator's are not sparse
    fs::create_directory(dir.Native("d"));
    const auto ask = [&](unsigned first) {
        for (unsigned i = first; i < kPaths; i += kThreads / 2) {
            std::string name = dir.Path();
            for (unsigned bits = i; bits > 0; bits /= 2) name += bits % 2 != 0 ? "\\." : "\\d\\..";
            EXPECT_EQ(FS::GetVersionInformation(name + "\\x.exe", "").productName, "x");
        }
    };
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < kThreads; ++t) threads.emplace_back(ask, t / 2);  // each path twice
    for (auto& thread : threads) thread.join();
    std::ostringstream figures;
    for (const VariantList& row : SelfMetrics()) figures << row;
    EXPECT_THAT(figures.str(),
                testing::HasSubstr("{Name=Cache.VersionInformation, Value=" + std::to_string(kPaths)));
    FS::ClearVersionInformationCache();
}

}  // namespace
}  // namespace quillon::test
