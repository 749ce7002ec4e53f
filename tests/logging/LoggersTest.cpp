#include <gmock/gmock.h>

#include <stdexcept>

#include "quillon/CLogger.h"
#include "quillon/JsonLinesLogger.h"
#include "quillon/SelfMetrics.h"
#include "quillon/SystemLoggers.h"
#include "quillon/TeeLogger.h"
#include "support/LogLines.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using Level = ICLogger::Level;
using LoggersTest = TempDirTest;
using testing::ElementsAre;

struct ThrowingLogger final : LoggerBase {
    void Write(Level, const char*, std::va_list) override { throw std::runtime_error("full"); }
};

long long Dropped() {
    const DataTable metrics = SelfMetrics();
    for (const auto& row : metrics) {
        if (row.Get("Name").GetStringValue() == "DroppedLogLines") return row.Get("Value").GetLongLongValue();
    }
    return -1;
}

}  // namespace

TEST_F(LoggersTest, JsonLinesAreObjectsAndRollOver) {
    JsonLinesLogger log;
    log.Info("dropped: there is no file");
    log.InitializeLogging(dir.Path("log").c_str(), Level::Debug);
    EXPECT_TRUE(log.IsInitialized());
    EXPECT_EQ(log.GetPath(), dir.Path("log"));
    log.Trace("suppressed");
    log.Debug("a \"%s\"\n\xC3\xA9", "\\");
    const auto written = LinesOf(dir.Read("log"));
    ASSERT_EQ(written.size(), 1u);
    EXPECT_THAT(written[0], testing::StartsWith("{\"time\":\"20"));
    EXPECT_THAT(written[0], testing::HasSubstr("Z\",\"level\":\"DEBUG\",\"thread\":"));
    EXPECT_THAT(written[0], testing::EndsWith(",\"message\":\"a \\\"\\\\\\\"\\n\xC3\xA9\"}"));
    log.StopLogging();
    dir.Write("log", std::string(5'242'880, 'x') + '\n');
    log.SetPath(dir.Path("log"));
    log.Warn("entry");
    const auto lines = LinesOf(dir.Read("log"));
    EXPECT_GE(lines.size(), 6u);  // the report may complain once a process about the version
    EXPECT_THAT(lines.front(), testing::HasSubstr("Log roll-over"));
    EXPECT_THAT(lines.back(), testing::HasSubstr(R"("level":"WARN")"));
}

TEST_F(LoggersTest, TeePassesToAllWhateverOneDoes) {
    RecordingLogger first, second;
    ThrowingLogger throwing;
    TeeLogger tee({&first, &throwing, &second});
    second.SetLevel(Level::Error);
    EXPECT_THROW(tee.Warn("%d%%", 50), std::runtime_error);
    EXPECT_THROW(tee.Fatal("last"), std::runtime_error);
    EXPECT_THAT(first.Lines(), ElementsAre("50%", "last"));
    EXPECT_THAT(second.Lines(), ElementsAre("last"));
    EXPECT_THAT(first.Lines(Level::Fatal), ElementsAre("last"));
}

TEST_F(LoggersTest, EntriesWithoutAJournalAreCounted) {
    const long long before = Dropped();
    JournalLogger log("test", (dir.Native() / "no socket").string());
    log.Debug("suppressed");
    log.Error("lost");
    EXPECT_EQ(Dropped(), before + 1);
}

TEST_F(LoggersTest, EntriesAreEnabledAsTheyAreWritten) {
    RecordingLogger log;
    log.SetLevel(Level::Warn);
    EXPECT_FALSE(log.IsEnabled(Level::Info));
    EXPECT_TRUE(log.IsEnabled(Level::Warn));
}

}  // namespace quillon::test
