#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "quillon/CLogger.h"
#include "quillon/IDeviceInformation.h"
#include "support/ChildMain.h"
#include "support/LogLines.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using Level = ICLogger::Level;
using Arguments = std::vector<std::string>;
using CLoggerLifeTest = TempDirTest;

constexpr int kThreads = 4;

/// Writes numbered lines, and after each its number into a file of its own: that line is acknowledged.
void WriteAndAcknowledge(int thread, const std::string& path) {
    constexpr int kMost = 15'000;  // of all threads less than what makes the log roll over
    std::ofstream acknowledged(ToNative(path + '.' + std::to_string(thread)));
    for (int n = 0; n < kMost; ++n) {
        CLogger::GetInstance()->Info("%d %d", thread, n);
        acknowledged.seekp(0) << n << std::flush;
    }
}

bool HasGrown(const fs::path& file) {
    constexpr std::uintmax_t kEnough = 100'000;
    std::error_code ignored;
    return fs::exists(file, ignored) && fs::file_size(file, ignored) > kEnough;
}

/// LOG: ends while its threads go on logging.
const ChildMode ending("clogger-ending", [](const Arguments& a) {
    CLogger::GetInstance()->InitializeLogging(a[0].c_str(), Level::Info);
    for (int t = 0; t < kThreads; ++t) std::thread(&WriteAndAcknowledge, t, a[0]).detach();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!HasGrown(ToNative(a[0])) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    return 0;
});

/// LOG: logs until it is killed.
const ChildMode killed("clogger-killed", [](const Arguments& a) {
    CLogger::GetInstance()->InitializeLogging(a[0].c_str(), Level::Info);
    Threads(kThreads, [&a](int t) { WriteAndAcknowledge(t, a[0]); }).Join();
    return 0;
});

/// LOG: four threads log while the path changes; none of them gets far ahead of the paths.
const ChildMode moving("clogger-moving", [](const Arguments& a) {
    constexpr int kLinesOfPath = 250, kPaths = 20;
    ICLogger& log = *CLogger::GetInstance();
    log.InitializeLogging((a[0] + "0").c_str(), Level::Info);
    std::atomic<int> path{0}, written{0};
    Threads threads(kThreads, [&](int t) {
        for (int n = 0; n < kPaths * kLinesOfPath; ++n, ++written) {
            while (n > (path + 1) * kLinesOfPath) std::this_thread::yield();
            log.Info("%d %d", t, n);
        }
    });
    while (++path < kPaths) {
        while (written <= kThreads * kLinesOfPath * (path - 1)) std::this_thread::yield();
        log.SetPath(a[0] + std::to_string(path));
    }
    threads.Join();
    return 0;
});

std::ptrdiff_t CountThreads() {
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

/// Succeeds when this process has one thread, before and after logging has begun (Linux).
const ChildMode counting("clogger-counting", [](const Arguments& a) {
    // A thread that has been joined is counted until the kernel has removed it, on a busy machine a while.
    const auto hasNoThreads = [] {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (CountThreads() > 1 && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
        return CountThreads() == 1;
    };
    if (!hasNoThreads()) return 1;
    CLogger::GetInstance()->InitializeLogging(a[0].c_str(), Level::Info);
    CLogger::GetInstance()->Info("entry");
    return hasNoThreads() ? 0 : 2;
});

/// Returns how many lines "thread number" follow one another without a gap.
std::vector<int> CountLines(const std::vector<std::string>& entries) {
    std::vector<int> next(kThreads, 0);
    for (const std::string& entry : entries) {
        int t = 0, n = 0;
        EXPECT_EQ(std::sscanf(entry.c_str(), "INFO  - %d %d", &t, &n), 2) << entry;
        EXPECT_EQ(n, next.at(static_cast<std::size_t>(t))++) << entry;
    }
    return next;
}

/// Checks that every acknowledged line of a log stands in it, whole and in its thread's order.
void CheckAcknowledged(const TempDir& dir, const std::string& name) {
    std::string text = dir.Read(name);
    text.resize(text.rfind('\n') + 1);  // the end may cut a line that nobody was told of
    const std::vector<int> lines = CountLines(EntriesOf(text));
    for (int t = 0; t < kThreads; ++t) {
        const std::string acknowledged = dir.Read(name + '.' + std::to_string(t));
        EXPECT_GT(lines[static_cast<std::size_t>(t)], acknowledged.empty() ? -1 : std::stoi(acknowledged));
    }
}

/// Does with the log what a service of a host may do, once, in the middle of a roll-over's report.
struct MeddlingDevice final : IDeviceInformation {
    MeddlingDevice() { ServiceLocator::Put<IDeviceInformation>(this); }
    ~MeddlingDevice() override { ServiceLocator::Remove<IDeviceInformation>(); }
    void LogDeviceInformation() override {
        ICLogger& log = *CLogger::GetInstance();
        log.Info("device");
        if (newPath.empty()) {
            log.StopLogging();
        } else {
            log.SetPath(newPath);
        }
        log.Info("afterwards");
    }
    std::string newPath;
};

}  // namespace

TEST_F(CLoggerLifeTest, LosesNothingAndEndsWhileThreadsLog) {
    if (!kLibstdcxx)
        GTEST_SKIP()
            << "the end of a process writes to streams that lie on those of C while their threads do";
    RecordingLogger log;
    for (int round = 0; round < 3; ++round) {
        const std::string name = "log" + std::to_string(round);
        const auto props = CommandOf(ChildCommand("clogger-ending", {dir.Path(name)}), log);
        props->captureOutput = false;
        props->timeoutSecs = 60;
        props->killOnTimeout = true;
        ASSERT_EQ(ProcessUtils::RunCliCommand(props), 0) << "it hangs or crashes";
        CheckAcknowledged(dir, name);
    }
}

TEST_F(CLoggerLifeTest, LosesNothingThatWasAcknowledgedBeforeAKill) {
    RecordingLogger log;
    for (int round = 0; round < 5; ++round) {
        const std::string name = "log" + std::to_string(round);
        const auto props = CommandOf(ChildCommand("clogger-killed", {dir.Path(name)}), log);
        props->captureOutput = false;
        props->timeoutSecs = 60;
        props->killOnTimeout = true;
        std::thread killer([&] {
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
            while (!HasGrown(dir.Native(name)) && std::chrono::steady_clock::now() < deadline)
                std::this_thread::yield();
            ProcessUtils::KillCommandProcess(props);
        });
        const int code = ProcessUtils::RunCliCommand(props);
        killer.join();
        EXPECT_EQ(code, -5) << "it ended before it was killed";
        CheckAcknowledged(dir, name);
    }
}

TEST_F(CLoggerLifeTest, NoLineFallsBetweenTwoPaths) {
    ASSERT_TRUE(RunChild("clogger-moving", {dir.Path("log")}).succeeded);
    std::vector<std::string> entries;
    int filled = 0;
    for (int path = 0; path < 20; ++path) {
        const auto ofPath = EntriesOf(dir.Read("log" + std::to_string(path)));
        filled += ofPath.empty() ? 0 : 1;
        entries.insert(entries.end(), ofPath.begin(), ofPath.end());
    }
    EXPECT_THAT(CountLines(entries), testing::Each(5'000));
    EXPECT_GT(filled, 5);
}

TEST_F(CLoggerLifeTest, ServiceMayChangeOrStopTheLogWithinTheReport) {
    for (const bool stops : {false, true}) {
        SCOPED_TRACE(stops);
        const std::string name = stops ? "stopped" : "changed";
        dir.Write(name, std::string(5'242'880, 'x') + '\n');
        ICLogger& log = *CLogger::GetInstance();
        log.InitializeLogging(dir.Path(name).c_str(), Level::Info);
        ServiceLocator::Put<ICLogger>(&log);
        {
            MeddlingDevice device;
            device.newPath = stops ? "" : dir.Path("new");
            log.Info("entry");
        }
        ServiceLocator::Remove<ICLogger>();
        EXPECT_EQ(log.IsInitialized(), !stops);
        log.Info("last");
        log.StopLogging();
        const std::vector<std::string> old = EntriesOf(dir.Read(name));
        EXPECT_EQ(old.back(), "INFO  - entry");
        EXPECT_EQ(std::count(old.begin(), old.end(), "INFO  - device"), 1);
        EXPECT_EQ(std::count(old.begin(), old.end(), "INFO  - afterwards"), 0);
    }
    const std::vector<std::string> entries = EntriesOf(dir.Read("new"));
    EXPECT_EQ(entries.front(), "INFO  - afterwards");
    EXPECT_EQ(entries.back(), "INFO  - last");
    CLogger::ReleaseInstance();
}

TEST_F(CLoggerLifeTest, HasNoThreads) {
    if (kWindows || kSanitized) GTEST_SKIP() << "needs /proc, and a process without the sanitizers' thread";
    EXPECT_TRUE(RunChild("clogger-counting", {dir.Path("log")}).succeeded);
}

}  // namespace quillon::test
