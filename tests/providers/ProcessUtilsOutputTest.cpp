#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <mutex>
#include <thread>

#include "quillon/IShutdownNotifier.h"
#include "quillon/LoggerBase.h"
#include "quillon/ProcessUtils.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using Level = ICLogger::Level;
using Properties = std::shared_ptr<ProcessUtils::CmdProperties>;

class ProcessUtilsOutput : public TempDirTest {
protected:
    Properties Child(const std::string& mode, const std::vector<std::string>& arguments) {
        return CommandOf(ChildCommand(mode, arguments), m_log);
    }
    static std::string OutputOf(const Properties& props) {
        return props->outputTable.GetFirstRow()->Get("Output").GetStringValue();
    }

    RecordingLogger m_log;
    fs::path m_started = dir.Native("started");
    fs::path m_go = dir.Native("go");
};

TEST_F(ProcessUtilsOutput, NoCommandCanCutOrSeekIt) {
    if (kWindows) GTEST_SKIP() << "a program on Windows cannot open its output by a name";
    const std::pair<const char*, const char*> cases[] = {
        {"echo one; echo two > /dev/stderr; echo three", "one\ntwo\nthree"},
        {"echo one; echo two > /dev/stdout; echo three >> /dev/stderr", "one\ntwo\nthree"},
        {"echo one; : > /proc/self/fd/1; echo two", "one\ntwo"}};
    for (const auto& [script, expected] : cases) {
        const auto props = CommandOf(std::string("cmd /c ") + script, m_log);
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
        EXPECT_EQ(OutputOf(props), expected) << script;
        EXPECT_EQ(props->outputBytes, std::strlen(expected) + 1);
    }
}

/// Always 0 on Windows, which has no such directory.
auto CountDescriptors() {
    std::error_code error;
    return std::distance(fs::directory_iterator("/proc/self/fd", error), fs::directory_iterator());
}

/// What a daemon writes to the output after the end of its command is nobody's, and harms it not.
TEST_F(ProcessUtilsOutput, ADaemonMayWriteOn) {
    const fs::path done = dir.Native("done");
    const auto descriptors = CountDescriptors();
    auto props = Child("overflow", {m_started.string(), m_go.string(), done.string()});
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_EQ(OutputOf(props), "before");
    props.reset();  // which keeps an event
    std::ofstream(m_go) << "go";
    EXPECT_TRUE(AwaitFile(done));
    for (int i = 0; i < 3000 && CountDescriptors() > descriptors; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_LE(CountDescriptors(), descriptors) << "what reads the output of the daemon is left";
}

/// Holds the worker back when it tells of the output, until the command's time is long over.
class SlowLogger final : public LoggerBase {
public:
    SlowLogger() : LoggerBase(Level::Trace) {}

private:
    QUILLON_PRINTF(3, 0) void Write(Level, const char* format, std::va_list) override {
        if (std::strncmp(format, "Output from", 11) == 0) std::this_thread::sleep_until(m_late);
    }
    std::chrono::steady_clock::time_point m_late = std::chrono::steady_clock::now() + std::chrono::seconds(6);
};

TEST_F(ProcessUtilsOutput, ACommandThatEndedInTimeIsNotLateBecauseOfItsRows) {
    SlowLogger slow;
    const auto props = Child("print", {"a|b", "7"});
    props->logger = &slow;
    props->outputAsLines = true;
    props->timeoutSecs = 5;
    props->killOnTimeout = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 7);
    EXPECT_FALSE(props->timedOut || props->killed);
    EXPECT_EQ(props->outputTable.GetNumberOfRows(), 2u);
}

TEST_F(ProcessUtilsOutput, ALimitEndsDescendantsThoughNoTreeIsKilled) {
    // The shell ends at once; its child fills the pipe, and makes DONE only when nobody stops it.
    const fs::path done = dir.Native("done");
    std::ofstream(m_go) << "go";
    const std::string pour = ChildCommand("pour", {m_started.string(), m_go.string(), done.string()});
    const auto props = CommandOf(kWindows ? "cmd /c " + pour : "cmd /c " + pour + "; true", m_log);
    props->maxOutputBytes = 1000;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), -5);
    EXPECT_TRUE(props->outputTruncated && props->killed);
    EXPECT_EQ(props->outputBytes, 1000u);
    const auto writer = std::make_shared<ProcessUtils::CmdProperties>();
    std::ifstream(m_started) >> writer->processId;
    EXPECT_FALSE(!kWindows && ProcessUtils::KillCommandProcess(writer)) << "the writer lives";
    EXPECT_FALSE(fs::exists(done));
}

TEST_F(ProcessUtilsOutput, ARunThatHasEndedHasNoProcessToKill) {
    const auto props = Child("print", {"x", "0"});
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    // As when the system has given the identifier to somebody else.
    std::thread other([this] {
        const auto waiting = Child("await", {m_started.string(), m_go.string()});
        EXPECT_EQ(ProcessUtils::RunCliCommand(waiting), 7);
    });
    EXPECT_TRUE(AwaitFile(m_started));
    while (!(std::ifstream(m_started) >> props->processId)) std::this_thread::yield();
    EXPECT_FALSE(ProcessUtils::KillCommandProcess(props));
    EXPECT_THAT(m_log.Lines(Level::Error),
                testing::ElementsAre(testing::StartsWith("Could not open command process with PID ")));
    std::ofstream(m_go) << "go";
    other.join();
}

/// A host's notifier; its monitor counts the questions.
class Notifier final : public IShutdownNotifier {
public:
    Notifier() { ServiceLocator::Put<IShutdownNotifier>(this); }
    ~Notifier() override { ServiceLocator::Remove<IShutdownNotifier>(); }
    std::uint64_t OnShutdown(std::function<void()> callback) override {
        const std::lock_guard lock(m_mutex);
        m_callback = std::move(callback);
        ++registered;
        return 4711;
    }
    void ForgetCallback(std::uint64_t registration) override { registered -= registration == 4711 ? 1 : 0; }
    void Call() {
        const std::lock_guard lock(m_mutex);
        m_callback();
    }

    std::atomic<int> registered{0};

private:
    std::mutex m_mutex;
    std::function<void()> m_callback;
};

TEST_F(ProcessUtilsOutput, ANotifierEndsTheWaitAndNobodyLooks) {
    std::atomic<int> looks{0};
    const Monitor monitor([&looks] { return ++looks < 0; });
    Notifier notifier;
    std::thread host([this, &notifier] {
        EXPECT_TRUE(AwaitFile(m_started));
        notifier.Call();
    });
    const auto props = Child("await", {m_started.string(), m_go.string()});
    props->killOnTimeout = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), -6);
    EXPECT_TRUE(props->abortedOnShutdown && props->killed);
    EXPECT_EQ(notifier.registered, 0);
    EXPECT_LE(looks, 1);
    host.join();
}

TEST_F(ProcessUtilsOutput, IsReadInItsCodePage) {
    const std::string e = "\xC3\xA9";  // what the child prints; in page 437 other characters
    const std::tuple<std::uint32_t, std::string, int> cases[] = {
        {0, e, 0}, {65001, e, 0}, {437, "\xE2\x94\x9C\xE2\x8C\x90", 0}, {4711, e, 1}};
    for (const auto& [page, text, errors] : cases) {
        SCOPED_TRACE(page);
        m_log.Forget();
        const auto props = Child("print", {"~", "0"});
        props->outputCodePage = page;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
        EXPECT_EQ(OutputOf(props), text);
        EXPECT_EQ(m_log.Lines(Level::Error).size(), static_cast<std::size_t>(errors));
    }
}

TEST_F(ProcessUtilsOutput, ARunTellsItsTimesAndItsSignal) {
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds(1);
    const auto props = Child("print", {"x", "0"});
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_GE(props->startTime, before);
    EXPECT_GE(props->endTime, props->startTime);
    EXPECT_EQ(props->endingSignal, 0);
    if (kWindows) return;  // the emulator tells no times of what has ended
    EXPECT_GT(props->cpuTimeMs, 0u);
    const auto killed = CommandOf("cmd /c kill -9 $$", m_log);
    EXPECT_EQ(ProcessUtils::RunCliCommand(killed), 128 + 9);
    EXPECT_EQ(killed->endingSignal, 9);
    const auto bare = CommandOf("/usr/bin/env", m_log);
    bare->environment.emplace();
    EXPECT_EQ(ProcessUtils::RunCliCommand(bare), 0);
    EXPECT_EQ(OutputOf(bare), "");
    const auto marked = CommandOf("/usr/bin/env", m_log);
    marked->environment.emplace();
    marked->killTree = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(marked), 0);
    EXPECT_THAT(OutputOf(marked), testing::MatchesRegex("QUILLON_COMMAND=<[^\n]*>"));
}

TEST_F(ProcessUtilsOutput, AKillMayAskFirst) {
    if (kWindows) GTEST_SKIP() << "the emulator gives console events to nobody";
    for (const bool listens : {true, false}) {
        SCOPED_TRACE(listens);
        const fs::path ready = dir.Native(listens ? "listens" : "ignores");
        const Monitor monitor([&ready] { return fs::exists(ready); });
        const std::string trap = listens ? "trap 'echo bye; exit 9' TERM; " : "trap '' TERM; ";
        const auto props = CommandOf(
            "cmd /c " + trap + "touch " + ready.string() + "; for i in 1 2 3 4 5 6 7 8; do sleep 1; done",
            m_log);
        props->killOnTimeout = props->killTree = true;
        props->killGraceMs = listens ? 60'000 : 50;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), -6);
        EXPECT_TRUE(props->killed);
        EXPECT_EQ(props->resultCode, listens ? 9 : -6);
        EXPECT_THAT(OutputOf(props), testing::EndsWith(listens ? "bye" : ""));
    }
}

/// The waiting process ignores requests to end, so its kill takes all of its grace unless GO comes.
TEST_F(ProcessUtilsOutput, OneKillHoldsNoOtherRunUp) {
    if (kWindows) GTEST_SKIP() << "the emulator gives console events to nobody";
    const auto slow = Child("await", {m_started.string(), m_go.string()});
    slow->killGraceMs = 60'000;
    slow->killTree = true;
    std::thread run([&slow] { EXPECT_EQ(ProcessUtils::RunCliCommand(slow), 7); });
    std::thread killer([this, &slow] {
        EXPECT_TRUE(AwaitFile(m_started));
        EXPECT_TRUE(ProcessUtils::KillCommandProcess(slow));
    });
    const auto isKilling = [this] {
        const auto lines = m_log.Lines(Level::Debug);
        return std::any_of(lines.begin(), lines.end(),
                           [](const auto& line) { return line.starts_with("About to attempt to kill"); });
    };
    for (int look = 0; look < 6'000 && !isKilling(); ++look)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    for (const bool tree : {false, true}) {
        const auto other = Child("print", {"x", "3"});
        other->killTree = tree;
        EXPECT_EQ(ProcessUtils::RunCliCommand(other), 3);
    }
    EXPECT_FALSE(slow->killed);
    std::ofstream(m_go) << "go";
    killer.join();
    run.join();
}

}  // namespace

}  // namespace quillon::test
