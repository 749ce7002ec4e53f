#include "logging/CustomRollingFileAppender.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <thread>

#include "logging/internal/RollingLog.h"
#include "quillon/DestructorFunctor.h"
#include "support/LogLines.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using CustomRollingFileAppenderTest = TempDirTest;

constexpr std::size_t kMaxSize = 5'242'880;

std::string Filled(std::size_t size) { return std::string(size, 'x'); }

}  // namespace

TEST(CustomRollingFileAppenderSize, RollsOnlyPastTheMaximumSize) {
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
        const RollingLog* self = nullptr;
        const RollingLog log(dir.Path("log"), [&self] { self->Write("report"); });
        self = &log;
        log.Write("entry");
        EXPECT_TRUE(dir.Read("log") == c.current) << c.what;  // EXPECT_EQ would print megabytes
        EXPECT_TRUE(dir.Read("log.1") == c.backup) << c.what;
    }
}

TEST(CustomRollingFileAppenderSize, MovesBackupsUpToTheFirstGap) {
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

TEST_F(CustomRollingFileAppenderTest, RefusedRollOverLosesNothingAndIsRetriedLater) {
    for (int n = 1; n < 5; ++n) dir.Write("log." + std::to_string(n), "backup");
    dir.Write("log.5/x", "");  // a folder with something in it: every roll-over fails
    dir.Write("log", Filled(kMaxSize));
    int rolled = 0;
    const RollingLog log(dir.Path("log"), [&rolled] { ++rolled; });
    log.Write("first");
    log.Write("second");
    EXPECT_EQ(rolled, 0);
    fs::remove_all(dir.Native("log.5"));
    log.Write("third");
    EXPECT_EQ(rolled, 0) << "tried again for one line";
    log.Write(Filled(400'000));
    EXPECT_EQ(rolled, 1);
    EXPECT_TRUE(dir.Read("log.1") ==
                Filled(kMaxSize) + Line("first") + Line("second") + Line("third") + Line(Filled(400'000)));
    EXPECT_EQ(dir.Read("log"), "");
    EXPECT_EQ(dir.Read("log.5"), "backup");
}

TEST_F(CustomRollingFileAppenderTest, KeepsTheFileFromOthersAndChildren) {
    if (kWindows) GTEST_SKIP() << "modes and descriptor lists are Linux's";
    const RollingLog log(dir.Path("log"));
    const auto mode = fs::status(dir.Native("log")).permissions();
    EXPECT_EQ(mode & ~fs::perms::group_read, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_NE(std::system("ls -l /proc/self/fd | grep -q quillon-test"), 0) << "a child has the log open";
}

TEST_F(CustomRollingFileAppenderTest, WritesAgainOnceTheDeviceTakesData) {
    if (kWindows) GTEST_SKIP() << "needs a device that is always full";
    fs::create_symlink("/dev/full", dir.Native("log"));
    const RollingLog log(dir.Path("log"));
    log.Write("lost");
    log.Write("lost too");
    fs::remove(dir.Native("log"));
    log.Write("kept");
    EXPECT_EQ(dir.Read("log"), Line("kept"));
}

TEST_F(CustomRollingFileAppenderTest, NeitherWaitsForAPipeNorMovesADevice) {
    if (kWindows) GTEST_SKIP() << "pipes and devices are no files there";
    ASSERT_EQ(std::system(("mkfifo " + dir.Native("pipe").string()).c_str()), 0);
    RollingLog(dir.Path("pipe")).Write("lost");

    fs::create_symlink("/dev/null", dir.Native("device"));
    const RollingLog log(dir.Path("device"));
    for (int megabyte = 0; megabyte < 7; ++megabyte) log.Write(std::string(1'000'000, 'x'));
    EXPECT_TRUE(fs::is_symlink(dir.Native("device")));
    EXPECT_FALSE(fs::exists(dir.Native("device.1")));
}

TEST_F(CustomRollingFileAppenderTest, FullDiskTearsNoLaterLine) {
    const std::string mountPoint = dir.Native().string();
    if (kWindows ||
        std::system(("mount -t tmpfs -o size=1m none " + mountPoint + " 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "needs the right to mount a small file system";
    }
    const DestructorFunctor unmount(
        [&mountPoint] { EXPECT_EQ(std::system(("umount " + mountPoint).c_str()), 0); });
    dir.Write("ballast", Filled(1'000'000));
    const RollingLog log(dir.Path("log"));
    const std::string filler(100, 'y');
    for (int n = 0; n < 1'000; ++n) log.Write(filler);
    EXPECT_LT(fs::file_size(dir.Native("log")), 100'000u) << "the disk did not get full";
    fs::remove(dir.Native("ballast"));
    log.Write("room again");
    log.Write("and more");

    auto lines = LinesOf(dir.Read("log"));
    ASSERT_GT(lines.size(), 3u);
    EXPECT_THAT(std::vector(lines.end() - 2, lines.end()), testing::ElementsAre("room again", "and more"));
    EXPECT_LT(lines[lines.size() - 3].size(), 100u) << "no line was torn: the test is too weak";
    lines.resize(lines.size() - 3);
    EXPECT_THAT(lines, testing::Each(filler));
}

TEST_F(CustomRollingFileAppenderTest, ThreadsLoseAndTearNoLineOverManyRollOvers) {
    constexpr int kThreads = 8, kLines = 100'000 / QUILLON_TEST_SLOWDOWN, kRollOvers = 10;
    const std::string padding(70 * QUILLON_TEST_SLOWDOWN, '.');
    int rolled = 0;
    const RollingLog* self = nullptr;
    const RollingLog log(dir.Path("log"), [&] {
        fs::rename(dir.Native("log.1"), dir.Native("kept." + std::to_string(rolled++)));
        self->Write("report");
    });
    self = &log;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&log, &padding, t] {
            for (int n = 0; n < kLines; ++n)
                log.Write(std::to_string(t) + ' ' + std::to_string(n) + ' ' + padding);
        });
    }
    for (std::thread& thread : threads) thread.join();

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
