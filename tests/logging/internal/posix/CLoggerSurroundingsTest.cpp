#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "quillon/CLogger.h"
#include "quillon/JsonLinesLogger.h"
#include "quillon/TeeLogger.h"
#include "support/ChildMain.h"
#include "support/LogLines.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace quillon::test {

namespace {

using Arguments = std::vector<std::string>;
using Level = ICLogger::Level;

/// What only Linux has: forks, and standard streams that a shell closes or leads into pipes. Paths are
/// native, as a shell takes backslashes away.
class CLoggerSurroundingsTest : public TempDirTest {
protected:
    /// Runs a mode with more shell around it; the code is that of the mode.
    int Run(const std::string& mode, const Arguments& arguments, const std::string& rest) const {
        const std::string line = "timeout 60 " + ChildCommand(mode, arguments) + ' ' + rest;
        return std::system(("bash -c 'set -o pipefail; " + line + "'").c_str());
    }
    std::vector<std::string> Entries() const { return EntriesOf(dir.Read("log")); }
    /// The lines of a log that may have been rolled over once.
    std::vector<std::string> AllLines(const std::string& log) const {
        const std::string rolledOver = dir.Exists(log + ".1") ? dir.Read(log + ".1") : "";
        return LinesOf(rolledOver + dir.Read(log));
    }
};

/// LOG LINES: writes that many entries.
const ChildMode many("clogger-many", [](const Arguments& a) {
    CLogger::GetInstance()->InitializeLogging(a[0].c_str(), Level::Info);
    const int lines = std::stoi(a[1]);
    for (int n = 0; n < lines; ++n) CLogger::GetInstance()->Info("%d", n);
    return 0;
});

/// LOG: forks while four threads log, each to both loggers; each child logs a line to both and ends.
const ChildMode forking("clogger-forking", [](const Arguments& a) {
    constexpr int kForks = 50, kMostLines = 50'000, kPatience = 30;
    CLogger::GetInstance()->InitializeLogging(a[0].c_str(), Level::Info);
    JsonLinesLogger json;
    json.InitializeLogging((a[0] + ".json").c_str(), Level::Info);
    TeeLogger both({CLogger::GetInstance(), &json});
    std::atomic<bool> isDone{false};
    Threads threads(4, [&isDone, &both](int) {
        for (int n = 0; n < kMostLines && !isDone; ++n) both.Info("parent");
    });
    int failed = 0;
    for (int n = 0; n < kForks; ++n) {
        const ::pid_t child = ::fork();
        if (child == 0) {
            ::alarm(kPatience);  // ends a child that hangs
            both.Info("child %d", static_cast<int>(::getpid()));
            ::_exit(0);
        }
        int status = 0;
        if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) ++failed;
    }
    isDone = true;
    threads.Join();
    return failed;
});

/// LOG COPIES: leads the null device, its standard output, to a file after the first entry, and logs until
/// the file has an entry.
const ChildMode redirected("clogger-redirected", [](const Arguments& a) {
    CLogger::GetInstance()->InitializeLogging(a[0].c_str(), Level::Info);
    CLogger::GetInstance()->Info("before");
    if (std::freopen(a[1].c_str(), "w", stdout) == nullptr) return 1;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::filesystem::file_size(a[1]) == 0 && std::chrono::steady_clock::now() < end) {
        CLogger::GetInstance()->Info("after");
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return 0;
});

}  // namespace

TEST_F(CLoggerSurroundingsTest, ForkedChildLogsOn) {
    if (kSanitized) {
        GTEST_SKIP()
            << "the address sanitizer's heap keeps the locks of threads that a forked child does not "
               "have, and the thread sanitizer takes these threads for leaks";
    }
    EXPECT_EQ(Run("clogger-forking", {dir.Native("log").string()}, ">/dev/null"), 0);
    int children = 0;
    for (const std::string& line : AllLines("log")) {
        const std::size_t child = line.find("child ");
        if (child == std::string::npos) continue;
        ++children;
        EXPECT_NE(line.find('[' + std::string(5 - std::min<std::size_t>(5, line.size() - child - 6), ' ') +
                            line.substr(child + 6) + ']'),
                  std::string::npos)
            << "not the child's thread: " << line;
    }
    EXPECT_EQ(children, 50);
    for (const std::string& line : AllLines("log.json"))
        children -= line.find("\"child ") != std::string::npos ? 1 : 0;
    EXPECT_EQ(children, 0) << "of the other logger";
}

TEST_F(CLoggerSurroundingsTest, ClosedStandardStreamsGetNoLine) {
    for (const char* closed : {">&-", "2>&-", "<&- >&- 2>&-"}) {
        SCOPED_TRACE(closed);
        EXPECT_EQ(Run("clogger-many", {dir.Native("log").string(), "100"},
                      closed + std::string(" | cat >/dev/null")),
                  0);
        EXPECT_EQ(Entries().size(), 100u);
        std::filesystem::remove(dir.Native("log"));
    }
}

TEST_F(CLoggerSurroundingsTest, ConsoleThatWasTheNullDeviceIsNoticed) {
    EXPECT_EQ(
        Run("clogger-redirected", {dir.Native("log").string(), dir.Native("copies").string()}, ">/dev/null"),
        0);
    EXPECT_THAT(EntriesOf(dir.Read("copies")), testing::Not(testing::IsEmpty()));
}

TEST_F(CLoggerSurroundingsTest, ReaderOfTheConsoleMayGoOrStall) {
    for (const char* reader : {"| true", "| sleep 1"}) {
        SCOPED_TRACE(reader);
        EXPECT_EQ(Run("clogger-many", {dir.Native("log").string(), "20000"}, reader), 0);
        EXPECT_EQ(Entries().size(), 20'000u);
        std::filesystem::remove(dir.Native("log"));
    }
}

}  // namespace quillon::test
