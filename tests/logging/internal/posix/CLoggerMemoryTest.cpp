#include <gmock/gmock.h>
#include <log4cplus/logger.h>

#include <new>
#include <utility>

#include "base/OwnFigures.h"
#include "quillon/CLogger.h"
#include "quillon/StdoutLogger.h"
#include "quillon/SystemLoggers.h"
#include "quillon/TeeLogger.h"
#include "support/ChildMain.h"
#include "support/LogLines.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

namespace {

using Arguments = std::vector<std::string>;
using Level = ICLogger::Level;
using CLoggerMemoryTest = TempDirTest;

/// Starts, moves and stops the log. Only a start may throw, and it may be tried again.
void RunSession(ICLogger& log, const Arguments& paths) {
    try {
        log.InitializeLogging(paths[0].c_str(), Level::Info);
        log.Info("first");
        log.SetPath(paths[1]);
    } catch (const std::bad_alloc&) {
    }
    log.Info("second");
    log.StopLogging();
}

/// LOG OTHER: refuses memory from each request of a session on, then from the middle of one until the process
/// has ended.
const ChildMode starved("clogger-starved", [](const Arguments& a) {
    constexpr int kMost = 400, kEver = 1'000'000;
    ICLogger& log = *CLogger::GetInstance();
    for (int before = 0, refused = 1; refused > 0 && before < kMost; ++before) {
        TheRefusedCalls() = {RefusedCalls::Memory, before, kEver};
        RunSession(log, a);
        refused = std::exchange(TheRefusedCalls(), {}).refused;
    }
    const std::uint64_t dropped = base::DroppedLogLines();
    log.InitializeLogging(a[0].c_str(), Level::Info);
    log.Info("last");
    TheRefusedCalls() = {RefusedCalls::Memory, 0, kEver};
    return base::DroppedLogLines() == dropped ? 0 : 1;
});

/// LOG: a host takes the appenders away, and gives the log a new file.
const ChildMode bereft("clogger-bereft", [](const Arguments& a) {
    ICLogger& log = *CLogger::GetInstance();
    log.InitializeLogging(a[0].c_str(), Level::Info);
    log.Info("before");
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.getAppender("DefaultFileAppender")->setThreshold(log4cplus::OFF_LOG_LEVEL);
    root.removeAllAppenders();
    log.Info("nowhere");
    log.SetPath(a[1]);
    root.log(log4cplus::INFO_LOG_LEVEL, "after");
    return 0;
});

}  // namespace

TEST_F(CLoggerMemoryTest, WithoutMemoryTheProcessGoesOn) {
    if (kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    if (!kLibstdcxx) GTEST_SKIP() << "log4cplus asks for memory when it is destroyed";
    const ChildOutput child = RunChild("clogger-starved", {dir.Path("log"), dir.Path("other")});
    EXPECT_TRUE(child.succeeded) << child.err;
    EXPECT_EQ(EntriesOf(dir.Read("log")).back(), "INFO  - last");
    EXPECT_EQ(EntriesOf(dir.Read("other")).back(), "INFO  - second");
}

TEST_F(CLoggerMemoryTest, WhatAHostHasTakenAwayIsClosedAndComesBackAsNew) {
    const ChildOutput child = RunChild("clogger-bereft", {dir.Path("log"), dir.Path("other")});
    EXPECT_TRUE(child.succeeded);
    EXPECT_THAT(EntriesOf(dir.Read("log")), testing::ElementsAre("INFO  - before"));
    EXPECT_THAT(EntriesOf(dir.Read("other")), testing::ElementsAre("INFO  - after"));
    EXPECT_THAT(EntriesOf(child.out), testing::ElementsAre("INFO  - before"));
}

TEST(StdoutLoggerMemory, WithoutMemoryNoLineIsLost) {
    if (kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    StdoutLogger logger;
    const std::string longText(20'000, 'y');
    const std::wstring wide(100, L'w');
    testing::internal::CaptureStdout();
    TheRefusedCalls() = {RefusedCalls::Memory, 0, 1'000};
    logger.Warn("%s|%5.1f|%*d", longText.c_str(), 1.5, 40, 7);
    logger.Warn("of %ls", wide.c_str());
    TheRefusedCalls() = {};
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "WARN " + longText + "|  1.5|" + std::string(39, ' ') + "7\nWARN of %ls\n");
}

TEST(LoggersMemory, WithoutMemoryEntriesAreLostAndCounted) {
    if (kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    ICLogger* const callback = CLogger::SetLoggingCallback([](Level, const std::string&) {});
    StdoutLogger other;
    TeeLogger tee({&other});
    JournalLogger journal("agent");
    EventLogLogger eventLog("agent");
    const std::uint64_t before = base::DroppedLogLines();
    TheRefusedCalls() = {RefusedCalls::Memory, 0, 1'000};
    for (ICLogger* const log : std::initializer_list<ICLogger*>{callback, &tee, &journal, &eventLog})
        log->Error("%s", "an entry that takes memory");
    TheRefusedCalls() = {};
    EXPECT_EQ(base::DroppedLogLines() - before, 4u);
    CLogger::ReleaseInstance();
}

}  // namespace quillon::test
