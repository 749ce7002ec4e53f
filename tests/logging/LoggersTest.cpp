#include <gmock/gmock.h>

#include <stdexcept>

#include "quillon/CLogger.h"
#include "quillon/JsonLinesLogger.h"
#include "quillon/SelfMetrics.h"
#include "quillon/SystemLoggers.h"
#include "quillon/TeeLogger.h"
#include "support/LogLines.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using Level = ICLogger::Level;
using LoggersTest = TempDirTest;
using testing::ElementsAre;

struct ThrowingLogger final : LoggerBase {
    void Write(Level, const char*, std::va_list) override { throw std::runtime_error("full"); }
};

long long Figure(const std::string& name) {
    const DataTable metrics = SelfMetrics();
    for (const auto& row : metrics) {
        if (row.Get("Name").GetStringValue() != name) continue;
        const Variant& value = row.Get("Value");
        return value.IsNull() ? 0 : value.GetLongLongValue();
    }
    return -1;
}

long long Dropped() { return Figure("DroppedLogLines"); }

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

TEST_F(LoggersTest, AJsonFileThatCannotBeOpenedIsToldOnce) {
    testing::internal::CaptureStderr();
    JsonLinesLogger log;
    log.InitializeLogging(dir.Path().c_str(), Level::Info);
    log.Info("lost");
    const auto told = LinesOf(testing::internal::GetCapturedStderr());
    EXPECT_THAT(told, ElementsAre(testing::StartsWith("JsonLinesLogger: Unable to open file: " + dir.Path() +
                                                      ": (")));
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

TEST_F(LoggersTest, FiguresTellWhatBecameOfTheLog) {
    for (int n = 1; n <= 5; ++n) dir.Write("log." + std::to_string(n) + "/x", "");
    dir.Write("log", std::string(5'242'880, 'x') + '\n');
    const auto before = std::filesystem::file_size(dir.Native("log"));
    const long long bytes = Figure("LogBytes"), refused = Figure("RefusedLogRollOvers"), dropped = Dropped();
    JsonLinesLogger log;
    log.InitializeLogging(dir.Path("log").c_str(), Level::Info);
    log.Info("entry");
    log.StopLogging();
    EXPECT_EQ(Figure("LogBytes") - bytes,
              static_cast<long long>(std::filesystem::file_size(dir.Native("log")) - before));
    EXPECT_EQ(Figure("RefusedLogRollOvers"), refused + 1);
    EXPECT_GT(Figure("LastLogError"), 0);
    EXPECT_EQ(Dropped(), dropped);
}

TEST_F(LoggersTest, TheEventLogTakesEntriesWhereThereIsOne) {
    const long long before = Dropped();
    EventLogLogger log("quillon-test");
    log.Debug("suppressed");
    for (const auto write : {&ICLogger::Info, &ICLogger::Warn, &ICLogger::Error, &ICLogger::Fatal})
        (log.*write)("\xC3\xA9 of '%s'", std::string(9'000, 'x').c_str());
    EXPECT_EQ(Dropped(), before + (kWindows ? 0 : 4));
}

TEST_F(LoggersTest, EntriesAreEnabledAsTheyAreWritten) {
    RecordingLogger recording;
    JsonLinesLogger json;  // which drops entries as long as it has no file
    CLogger::ReleaseInstance();
    ICLogger& file = *CLogger::GetInstance();
    for (ICLogger* const log : {static_cast<ICLogger*>(&recording), static_cast<ICLogger*>(&json), &file}) {
        const bool drops = log != &recording;
        EXPECT_EQ(log->IsEnabled(Level::Fatal), !drops);
        log->InitializeLogging(dir.Path(drops ? "log" : "none").c_str(), Level::Warn);
        EXPECT_FALSE(log->IsEnabled(Level::Info));
        EXPECT_TRUE(log->IsEnabled(Level::Warn));
        log->StopLogging();
        EXPECT_EQ(log->IsEnabled(Level::Warn), !drops);
    }
    CLogger::ReleaseInstance();
}

}  // namespace quillon::test
