#include "quillon/StdoutLogger.h"

#include <gmock/gmock.h>

#include "quillon/CLogger.h"

namespace quillon::test {

namespace {

using Level = ICLogger::Level;

void LogAtEveryLevel(ICLogger& logger) {
    logger.Trace("%s %d", "x", 0);
    logger.Debug("%s %d", "x", 1);
    logger.Info("%s %d", "x", 2);
    logger.Warn("%s %d", "x", 3);
    logger.Error("%s %d", "x", 4);
    logger.Fatal("%s %d", "x", 5);
}

}  // namespace

TEST(StdoutLogger, WritesWhatItsLevelLetsThrough) {
    testing::internal::CaptureStdout();
    StdoutLogger logger;
    LogAtEveryLevel(logger);
    EXPECT_EQ(logger.SetLevel(Level::Trace), Level::Warn);
    LogAtEveryLevel(logger);
    logger.InitializeLogging("ignored.log", Level::Fatal);
    logger.SetPath("ignored.log");
    LogAtEveryLevel(logger);
    logger.Fatal("%s", std::string(20'000, 'y').c_str());
    const char* const none = nullptr;
    logger.Fatal(none);
    EXPECT_EQ(logger.GetPath(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "WARN x 3\nERROR x 4\nFATAL x 5\n"
              "TRACE x 0\nDEBUG x 1\nINFO x 2\nWARN x 3\nERROR x 4\nFATAL x 5\n"
              "FATAL x 5\nFATAL " +
                  std::string(20'000, 'y') + "\nFATAL \n");
}

TEST(CallbackLogger, HandsFormattedEntriesToTheHost) {
    std::vector<std::string> entries;
    ICLogger* logger = CLogger::SetLoggingCallback(
        [&](Level level, const std::string& text) { entries.push_back(std::to_string(level) + ':' + text); });
    EXPECT_EQ(CLogger::GetInstance(), logger);
    logger->InitializeLogging("ignored.log", Level::Trace);
    LogAtEveryLevel(*logger);
    EXPECT_EQ(logger->SetLevel(Level::Error), Level::Error);
    LogAtEveryLevel(*logger);
    logger->Error("%s", std::string(20'000, 'y').c_str());
    EXPECT_EQ(logger->GetPath(), "");
    EXPECT_THAT(entries, testing::ElementsAre("2:x 2", "3:x 3", "4:x 4", "5:x 5", "4:x 4", "5:x 5",
                                              "4:" + std::string(9'999, 'y')));
    ICLogger* const cleared = CLogger::ClearLoggingCallback();
    EXPECT_FALSE(cleared->IsInitialized());
    EXPECT_TRUE(CLogger::HaveInstance());
    EXPECT_EQ(CLogger::GetInstance(), cleared);
    CLogger::ReleaseInstance();
}

TEST(CallbackLogger, EmptyCallbackThrowsForEntriesThatPass) {
    ICLogger* logger = CLogger::SetLoggingCallback({});
    EXPECT_NO_THROW(logger->Debug("suppressed"));
    EXPECT_THROW(logger->Info("passes"), std::bad_function_call);
    CLogger::ReleaseInstance();
}

TEST(CallbackLogger, MayAskForTheInstanceWhileItIsReplaced) {
    const auto ask = [](int*) { CLogger::HaveInstance(); };
    CLogger::SetLoggingCallback([asker = std::shared_ptr<int>(nullptr, ask)](Level, const std::string&) {});
    CLogger::ReleaseInstance();
    EXPECT_FALSE(CLogger::HaveInstance());
}

}  // namespace quillon::test
