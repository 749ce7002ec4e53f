#include "quillon/CLogger.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>

#include "support/ChildMain.h"
#include "support/ForeignLocale.h"
#include "support/LogLines.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace quillon::test {

namespace {

using Level = ICLogger::Level;
using Arguments = std::vector<std::string>;
using CLoggerTest = TempDirTest;
using testing::ElementsAre;

void Check(bool condition, const char* what) {
    if (!condition) std::fprintf(stderr, "not so: %s\n", what);
}

const ChildMode session("clogger-session", [](const Arguments& paths) {
    ICLogger& log = *CLogger::GetInstance();
    log.Fatal("discarded");
    log.SetPath("");
    Check(!log.IsInitialized() && log.GetPath().empty(), "starts uninitialised");
    Check(log.SetLevel(Level::Trace) == Level::Info && log.GetLevel() == Level::Info, "has no level yet");
    log.InitializeLogging(paths[0].c_str(), Level::Info);
    log.InitializeLogging(paths[1].c_str(), Level::Trace);
    Check(log.GetLevel() == Level::Info && log.GetPath() == paths[0], "initialised once");
    log.Debug("suppressed %d", 1);
    Check(log.SetLevel(Level::Debug) == Level::Info, "SetLevel gives the previous level");
    log.Debug("50%% of %d", 2);
    Check(log.SetLevel(static_cast<Level>(9)) == Level::Debug && log.GetLevel() == Level::Debug,
          "level 9 refused");
    log.SetPath(paths[0]);
    log.SetPath("");
    log.SetPath(paths[1]);
    log.Fatal("%s", std::string(20'000, 'y').c_str());
    log.StopLogging();
    log.StopLogging();
    Check(!log.IsInitialized() && log.GetPath().empty(), "stopped");
    log.Fatal("discarded");
    log.InitializeLogging(paths[1].c_str(), Level::Fatal);
    log.Error("suppressed");
    log.Fatal("%s", "\xC3\xA9 again");
    log.StopLogging();
    log.InitializeLogging(nullptr, Level::Trace);
    Check(log.GetPath().empty(), "no file");
    log.Trace("console only");
    return 0;
});

const ChildMode path("clogger-path", [](const Arguments& a) {
    const bool setBefore = a[1] == "set";
    if (setBefore) CLogger::GetInstance()->SetPath(a[0]);
    CLogger::GetInstance()->InitializeLogging(setBefore ? nullptr : a[0].c_str(), Level::Info);
    CLogger::GetInstance()->Info("one");
    CLogger::GetInstance()->Info("two");
    return 0;
});

const ChildMode threads("clogger-threads", [](const Arguments& a) {
    const ForeignLocale locale("C");  // which has separators in the numbers of new streams
    ICLogger& log = *CLogger::GetInstance();
    log.InitializeLogging(a[0].c_str(), Level::Info);
    Threads writers(4, [&log](int) {
        for (int n = 0; n < 2'000; ++n) log.Info("%s", "entry"), log.Debug("suppressed");
    });
    for (int n = 0; n < 100; ++n) log.SetLevel(n % 2 == 0 ? Level::Debug : Level::Info);
    writers.Join();
    return 0;
});

}  // namespace

TEST_F(CLoggerTest, WritesTheSessionToFileAndStandardOutput) {
    const std::string first = dir.Path("new/\xC3\xA9/first.log"), second = dir.Path("second.log");
    const ChildOutput child = RunChild("clogger-session", {first, second});
    EXPECT_TRUE(child.succeeded);
    EXPECT_EQ(child.err, "");
    std::vector<std::string> entries = {"DEBUG - 50% of 2", "WARN  - Logfile '" + first + "' specified again",
                                        "ERROR - Logfile '' specified again"};
    EXPECT_EQ(EntriesOf(dir.Read("new/\xC3\xA9/first.log")), entries);
    const Arguments later = {"FATAL - " + std::string(9'999, 'y'), "FATAL - \xC3\xA9 again"};
    EXPECT_EQ(EntriesOf(dir.Read("second.log")), later);
    entries.insert(entries.end(), later.begin(), later.end());
    entries.push_back("TRACE - console only");
    EXPECT_EQ(EntriesOf(child.out), entries);
}

TEST_F(CLoggerTest, FileThatCannotBeOpenedLeavesTheConsole) {
    const std::string file = dir.Write("file", "kept");
    dir.SetReadOnly("file", true);
    const bool isRoot = static_cast<bool>(std::ofstream(dir.Native("file"), std::ios::app));
    for (const std::string& bad : {dir.Path(), dir.Path("file/log"), std::string(), file}) {
        SCOPED_TRACE(bad);
        if (isRoot && bad == file) continue;
        const ChildOutput child = RunChild("clogger-path", {bad, "initialize"});
        EXPECT_TRUE(child.succeeded);
        EXPECT_THAT(child.err, testing::StartsWith("log4cplus:ERROR Unable to open file: " + bad + ": ("));
        EXPECT_EQ(LinesOf(child.err).size(), 1u);
        EXPECT_THAT(EntriesOf(child.out), ElementsAre("INFO  - one", "INFO  - two"));
    }
    EXPECT_EQ(dir.Read("file"), "kept");
    dir.SetReadOnly("file", false);
}

TEST_F(CLoggerTest, PathSetBeforeInitializationStays) {
    EXPECT_TRUE(RunChild("clogger-path", {dir.Path("log"), "set"}).succeeded);
    EXPECT_THAT(EntriesOf(dir.Read("log")), ElementsAre("INFO  - one", "INFO  - two"));
}

TEST_F(CLoggerTest, ManyThreadsWriteWholeLines) {
    const ChildOutput child = RunChild("clogger-threads", {dir.Path("log")});
    EXPECT_TRUE(child.succeeded);
    EXPECT_EQ(child.err, "");
    const std::vector<std::string> entries = EntriesOf(dir.Read("log"));
    EXPECT_THAT(entries, testing::Each(testing::AnyOf("INFO  - entry", "DEBUG - suppressed")));
    EXPECT_EQ(std::count(entries.begin(), entries.end(), "INFO  - entry"), 8'000);
}

}  // namespace quillon::test
