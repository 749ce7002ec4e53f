#include "quillon/CLogger.h"

#include <gmock/gmock.h>

#include <thread>

#include "support/ChildMain.h"
#include "support/RunChild.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using Level = ICLogger::Level;

void Check(bool condition, const char* what) {
    if (!condition) std::fprintf(stderr, "not so: %s\n", what);
}

/// The level and text of each line, after its time stamp and thread have been checked: "INFO  - text".
std::vector<std::string> EntriesOf(std::string content) {
    const std::string stamp = "0000-00-00 00:00:00.000 [";
    std::erase(content, '\r');
    EXPECT_TRUE(content.empty() || content.back() == '\n');
    std::vector<std::string> entries;
    for (std::size_t start = 0; start < content.size(); start = content.find('\n', start) + 1) {
        const std::string line = content.substr(start, content.find('\n', start) - start);
        std::string shape = line.substr(0, stamp.size());
        for (char& c : shape) c = c >= '0' && c <= '9' ? '0' : c;
        EXPECT_EQ(shape, stamp) << line;
        const std::size_t close = std::min(line.find("] "), line.size() - 2);
        const std::string thread = line.substr(shape.size(), close - shape.size());
        EXPECT_TRUE(thread.size() >= 5 && thread.find_last_not_of(" 0123456789") == std::string::npos)
            << line;
        entries.push_back(line.substr(close + 2));
    }
    return entries;
}

void LogBeforeInitialization(ICLogger& log) {
    log.Fatal("discarded");
    log.SetPath("");
    Check(!log.IsInitialized() && log.GetPath().empty(), "starts uninitialised");
    Check(log.SetLevel(Level::Trace) == Level::Info && log.GetLevel() == Level::Info, "has no level yet");
}

const ChildMode session("clogger-session", [](const std::vector<std::string>& paths) {
    ICLogger& log = *CLogger::GetInstance();
    LogBeforeInitialization(log);
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

const ChildMode paths("clogger-path", [](const std::vector<std::string>& arguments) {
    ICLogger& log = *CLogger::GetInstance();
    log.InitializeLogging(arguments[0].c_str(), Level::Info);
    log.Info("still on the console");
    return 0;
});

const ChildMode setPathFirst("clogger-set-path-first", [](const std::vector<std::string>& arguments) {
    CLogger::GetInstance()->SetPath(arguments[0]);
    CLogger::GetInstance()->InitializeLogging(nullptr, Level::Info);
    CLogger::GetInstance()->Info("in the file");
    CLogger::GetInstance()->StopLogging();
    return 0;
});

const ChildMode threads("clogger-threads", [](const std::vector<std::string>& arguments) {
    ICLogger& log = *CLogger::GetInstance();
    log.InitializeLogging(arguments[0].c_str(), Level::Info);
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t) {
        writers.emplace_back([&log, t] {
            for (int n = 0; n < 2'000; ++n) log.Info("%d %d", t, n), log.Debug("suppressed");
        });
    }
    for (int n = 0; n < 100; ++n) log.SetLevel(n % 2 == 0 ? Level::Debug : Level::Info);
    for (std::thread& writer : writers) writer.join();
    log.StopLogging();
    return 0;
});

}  // namespace

TEST(CLogger, WritesTheSessionToFileAndStandardOutput) {
    TempDir dir;
    const std::string first = dir.Path("new/\xC3\xA9/first.log"), second = dir.Path("second.log");
    const ChildOutput child = RunChild("clogger-session", {first, second});
    EXPECT_TRUE(child.succeeded);
    EXPECT_EQ(child.err, "");
    const std::vector<std::string> before = {"DEBUG - 50% of 2",
                                             "WARN  - Logfile '" + first + "' specified again",
                                             "ERROR - Logfile '' specified again"};
    const std::vector<std::string> after = {"FATAL - " + std::string(9'999, 'y'), "FATAL - \xC3\xA9 again"};
    EXPECT_EQ(EntriesOf(dir.Read("new/\xC3\xA9/first.log")), before);
    EXPECT_EQ(EntriesOf(dir.Read("second.log")), after);
    std::vector<std::string> all = before;
    all.insert(all.end(), after.begin(), after.end());
    all.push_back("TRACE - console only");
    EXPECT_EQ(EntriesOf(child.out), all);
}

TEST(CLogger, FileThatCannotBeOpenedLeavesTheConsole) {
    TempDir dir;
    dir.Write("file", "kept");
    for (const std::string& path : {dir.Path(), dir.Path("file/log"), std::string()}) {
        SCOPED_TRACE(path);
        const ChildOutput child = RunChild("clogger-path", {path});
        EXPECT_TRUE(child.succeeded);
        EXPECT_EQ(child.err, "log4cplus:ERROR Unable to open file: " + path + "\n");
        EXPECT_THAT(EntriesOf(child.out), testing::ElementsAre("INFO  - still on the console"));
    }
    EXPECT_EQ(dir.Read("file"), "kept");
}

TEST(CLogger, PathSetBeforeInitializationStays) {
    TempDir dir;
    EXPECT_TRUE(RunChild("clogger-set-path-first", {dir.Path("log")}).succeeded);
    EXPECT_THAT(EntriesOf(dir.Read("log")), testing::ElementsAre("INFO  - in the file"));
}

TEST(CLogger, ManyThreadsWriteWholeLines) {
    TempDir dir;
    const ChildOutput child = RunChild("clogger-threads", {dir.Path("log")});
    EXPECT_TRUE(child.succeeded);
    EXPECT_EQ(child.err, "");
    std::vector<int> next(4, 0);
    for (const std::string& entry : EntriesOf(dir.Read("log"))) {
        if (entry == "DEBUG - suppressed") continue;
        const auto t = static_cast<std::size_t>(entry.at(8) - '0');
        EXPECT_EQ(entry, "INFO  - " + std::to_string(t) + ' ' + std::to_string(next.at(t)++));
    }
    EXPECT_THAT(next, testing::Each(2'000));
}

TEST(CLogger, SlotMakesOneInstanceUntilItIsReleased) {
    CLogger::ReleaseInstance();
    EXPECT_FALSE(CLogger::HaveInstance());
    ICLogger* first = CLogger::GetInstance();
    EXPECT_EQ(CLogger::GetInstance(), first);
    EXPECT_TRUE(CLogger::HaveInstance());
    CLogger::ReleaseInstance();
    EXPECT_FALSE(CLogger::HaveInstance());
}

}  // namespace quillon::test
