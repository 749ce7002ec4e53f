#include "quillon/StdoutLogger.h"

#include <gmock/gmock.h>

#include "quillon/CLogger.h"
#include "support/ChildMain.h"
#include "support/RunChild.h"

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

const ChildMode stdoutLogger("stdout-logger", [](const std::vector<std::string>&) {
    StdoutLogger logger;
    LogAtEveryLevel(logger);
    const Level first = logger.SetLevel(Level::Trace);
    LogAtEveryLevel(logger);
    logger.InitializeLogging("ignored.log", Level::Fatal);
    logger.SetPath("ignored.log");
    LogAtEveryLevel(logger);
    logger.Fatal("%s", std::string(20'000, 'y').c_str());
    return first == Level::Warn && logger.GetPath().empty() ? 0 : 1;
});

}  // namespace

TEST(StdoutLogger, WritesWhatItsLevelLetsThrough) {
    const ChildOutput child = RunChild("stdout-logger");
    EXPECT_TRUE(child.succeeded);
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.out,
              "WARN x 3\nERROR x 4\nFATAL x 5\n"
              "TRACE x 0\nDEBUG x 1\nINFO x 2\nWARN x 3\nERROR x 4\nFATAL x 5\n"
              "FATAL x 5\nFATAL " +
                  std::string(20'000, 'y') + "\n");
}

TEST(CallbackLogger, HandsFormattedEntriesToTheHost) {
    std::vector<std::pair<Level, std::string>> entries;
    ICLogger* logger = CLogger::SetLoggingCallback(
        [&](Level level, const std::string& text) { entries.emplace_back(level, text); });
    EXPECT_EQ(CLogger::GetInstance(), logger);
    logger->InitializeLogging("ignored.log", Level::Trace);
    LogAtEveryLevel(*logger);
    EXPECT_EQ(logger->SetLevel(Level::Error), Level::Error);
    LogAtEveryLevel(*logger);
    logger->Error("%s", std::string(20'000, 'y').c_str());
    EXPECT_EQ(logger->GetPath(), "");

    using testing::Pair;
    EXPECT_THAT(entries, testing::ElementsAre(Pair(Level::Info, "x 2"), Pair(Level::Warn, "x 3"),
                                              Pair(Level::Error, "x 4"), Pair(Level::Fatal, "x 5"),
                                              Pair(Level::Error, "x 4"), Pair(Level::Fatal, "x 5"),
                                              Pair(Level::Error, std::string(9'999, 'y'))));
    EXPECT_FALSE(CLogger::ClearLoggingCallback()->IsInitialized());
    CLogger::ReleaseInstance();
}

TEST(CallbackLogger, EmptyCallbackThrowsForEntriesThatPass) {
    ICLogger* logger = CLogger::SetLoggingCallback({});
    EXPECT_NO_THROW(logger->Debug("suppressed"));
    EXPECT_THROW(logger->Info("passes"), std::bad_function_call);
    CLogger::ReleaseInstance();
}

TEST(CallbackLogger, MayAskForTheInstanceWhileItIsReplaced) {
    struct Asker {
        ~Asker() { CLogger::HaveInstance(); }
    };
    CLogger::SetLoggingCallback([asker = std::make_shared<Asker>()](Level, const std::string&) {});
    CLogger::ReleaseInstance();
    EXPECT_FALSE(CLogger::HaveInstance());
}

}  // namespace quillon::test
