#include "logging/RollingFile.h"

#include <gmock/gmock.h>

#include "logging/internal/RollingLog.h"
#include "platform/LogFileApi.h"
#include "support/LogLines.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using RollingFileTest = TempDirTest;

constexpr std::size_t kMaxSize = 5'242'880;

/// One line of that size.
std::string Filled(std::size_t size) { return std::string(size - 1, 'x') + '\n'; }

const std::string kLong(400'000, 'y');

}  // namespace

TEST(RollingFileSize, RollsOnlyPastTheMaximumSize) {
    const std::string added = Line("entry");
    const struct {
        const char* what;
        std::size_t size;
        std::string current, backup;
    } cases[] = {
        {"the entry fills it exactly", kMaxSize - added.size(), Filled(kMaxSize - added.size()) + added, ""},
        {"full: rolled after the entry", kMaxSize, Line("report"), Filled(kMaxSize) + added},
        {"too long: rolled before the entry", kMaxSize + 1, Line("report") + added, Filled(kMaxSize + 1)},
    };
    for (const auto& c : cases) {
        TempDir dir;
        dir.Write("log", Filled(c.size));
        RollingLog* self = nullptr;
        RollingLog log(dir.Path("log"), [&self] { self->Write("report"); });
        self = &log;
        log.Write("entry");
        EXPECT_TRUE(dir.Read("log") == c.current) << c.what;  // EXPECT_EQ would print megabytes
        EXPECT_TRUE(dir.Read("log.1") == c.backup) << c.what;
    }
}

TEST(RollingFileSize, MovesBackupsUpToTheFirstGap) {
    // Content of the backups 1 to 6, '-' where there is none.
    const std::pair<std::string, std::string> cases[] = {
        {"------", "L-----"}, {"a-b---", "Lab---"}, {"abcde-", "Labcd-"}, {"-bcde-", "Lbcde-"}};
    for (const auto& [before, expected] : cases) {
        SCOPED_TRACE(before);
        TempDir dir;
        const auto backup = [](std::size_t n) { return "log." + std::to_string(n + 1); };
        for (std::size_t n = 0; n < 6; ++n) {
            if (before[n] != '-') dir.Write(backup(n), before.substr(n, 1));
        }
        dir.Write("log", 'L' + Filled(kMaxSize));
        RollingLog(dir.Path("log")).Write("entry");
        std::string after;
        for (std::size_t n = 0; n < 6; ++n) after += dir.Exists(backup(n)) ? dir.Read(backup(n))[0] : '-';
        EXPECT_EQ(after, expected);
        EXPECT_EQ(dir.Read("log"), Line("entry"));
    }
}

TEST_F(RollingFileTest, StepsOverBackupsThatAreNoFiles) {
    dir.Write("log.1/x", "");
    fs::create_directory(dir.Native("log.3"));
    for (const char* name : {"log.2", "log.4", "log.5"}) dir.Write(name, name);
    dir.Write("log", Filled(kMaxSize + 1));
    RollingLog log(dir.Path("log"));
    log.Write("entry");
    EXPECT_TRUE(dir.Read("log.2") == Filled(kMaxSize + 1));
    EXPECT_EQ(dir.Read("log.4") + dir.Read("log.5"), "log.2log.4");
    EXPECT_EQ(dir.Read("log"), Line("entry"));
    EXPECT_THAT(log.complaints, testing::IsEmpty());
}

TEST_F(RollingFileTest, RefusedRollOverLosesNothingIsToldOnceAndIsRetriedLater) {
    for (int n = 1; n <= 5; ++n) dir.Write("log." + std::to_string(n) + "/x", "");
    dir.Write("log", Filled(kMaxSize));
    int rolled = 0;
    RollingLog log(dir.Path("log"), [&rolled] { ++rolled; });
    log.Write("first");
    log.Write(kLong);
    EXPECT_EQ(rolled, 0);
    EXPECT_THAT(log.complaints, testing::ElementsAre(testing::StartsWith("Unable to roll over file: ")));
    fs::remove_all(dir.Native("log.1"));
    log.Write("second");
    EXPECT_EQ(rolled, 0) << "tried again for one line";
    log.Write(kLong);
    EXPECT_EQ(rolled, 1);
    EXPECT_TRUE(dir.Read("log.1") ==
                Filled(kMaxSize) + Line("first") + Line(kLong) + Line("second") + Line(kLong));
    EXPECT_EQ(dir.Read("log"), Line("2 attempts to roll the log file over were refused"));
}

TEST_F(RollingFileTest, StaysWhereItWasWhenTheWorkingDirectoryChanges) {
    const fs::path before = fs::current_path();
    fs::current_path(dir.Native());
    RollingLog log("sub/log");
    log.Write("one");
    fs::current_path(before);
    log.LetSecondPass();
    log.Write("two");
    EXPECT_EQ(dir.Read("sub/log"), Line("one") + Line("two"));
}

TEST_F(RollingFileTest, LeavesTheRollOverToWhoeverIsAtIt) {
    RollingLog log(dir.Path("log"));
    const auto other = platform::OpenLogFile(dir.Path("log"));
    ASSERT_TRUE(platform::TryLockLogFile(other));
    log.Write(std::string(kMaxSize, 'x'));
    EXPECT_FALSE(dir.Exists("log.1"));
    platform::UnlockLogFile(other);
    log.Write("later");
    EXPECT_EQ(dir.Read("log"), Line("later"));
}

TEST_F(RollingFileTest, FollowsItsPathWithinASecond) {
    RollingLog log(dir.Path("log"));
    log.Write("one");
    fs::rename(dir.Native("log"), dir.Native("moved"));
    log.Write("two");
    log.LetSecondPass();
    log.Write("three");
    EXPECT_EQ(dir.Read("moved"), Line("one") + Line("two"));
    EXPECT_EQ(dir.Read("log"), Line("three"));

    fs::remove(dir.Native("log"));
    dir.Write("log", "other");
    log.LetSecondPass();
    log.Write("four");
    EXPECT_EQ(dir.Read("log"), "other" + Line("") + Line("four"));

    dir.Write("log", "");
    log.LetSecondPass();
    log.Write("five");
    EXPECT_EQ(dir.Read("log"), Line("five"));
    log.Write(std::string(kMaxSize - Line("five").size() - Line("").size(), 'x'));
    EXPECT_FALSE(dir.Exists("log.1")) << "the size was not counted anew";
}

TEST_F(RollingFileTest, BeginsALineOfItsOwnAfterATornOne) {
    for (const std::string& end : {std::string("torn"), Line("whole"), std::string()}) {
        dir.Write("log", end);
        RollingLog(dir.Path("log")).Write("entry");
        EXPECT_EQ(dir.Read("log"), (end == "torn" ? "torn" + Line("") : end) + Line("entry"));
    }
}

TEST_F(RollingFileTest, ReportsWhenItsRefusedFileOpensAtLast) {
    const fs::path place = dir.Native("log");
    fs::create_directory(place);
    RollingLog* self = nullptr;
    RollingLog log(dir.Path("log"), [&self] { self->Write("report"); });
    self = &log;
    log.Write("lost");
    fs::remove(place);
    log.Write("kept");
    EXPECT_EQ(dir.Read("log"), Line("1 entries were lost") + Line("report") + Line("kept"));
    EXPECT_THAT(log.complaints, testing::ElementsAre(testing::StartsWith("Unable to open file: ")));
}

TEST_F(RollingFileTest, ThreadsLoseAndTearNoLineOverManyRollOvers) {
    constexpr int kThreads = 8, kLines = 100'000 / QUILLON_TEST_SLOWDOWN, kRollOvers = 10;
    const std::string padding(70 * QUILLON_TEST_SLOWDOWN, '.');
    int rolled = 0;
    RollingLog* self = nullptr;
    RollingLog log(dir.Path("log"), [&] {
        fs::rename(dir.Native("log.1"), dir.Native("kept." + std::to_string(rolled++)));
        self->Write("report");
    });
    self = &log;
    Threads(kThreads, [&log, &padding](int t) {
        for (int n = 0; n < kLines; ++n)
            log.Write(std::to_string(t) + ' ' + std::to_string(n) + ' ' + padding);
    }).Join();

    EXPECT_GE(rolled, kRollOvers);
    std::vector<int> next(kThreads, 0);
    int bad = 0;
    for (int file = 0; file <= rolled; ++file) {
        auto lines = LinesOf(dir.Read(file < rolled ? "kept." + std::to_string(file) : "log"));
        if (file > 0) {
            EXPECT_EQ(lines.at(0), "report");
            lines.erase(lines.begin());
        }
        for (const std::string& line : lines) {
            const auto t = static_cast<std::size_t>(line.at(0) - '0');
            if (line != std::to_string(t) + ' ' + std::to_string(next.at(t)++) + ' ' + padding) ++bad;
        }
    }
    EXPECT_EQ(bad, 0);
    EXPECT_THAT(next, testing::Each(kLines));
}

}  // namespace quillon::test
