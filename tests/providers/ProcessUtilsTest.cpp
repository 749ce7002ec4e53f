#include "quillon/ProcessUtils.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <thread>

#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"
#include "support/ChildMain.h"
#include "support/CommandChild.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;
using Level = ICLogger::Level;

std::string FirstOutput(const ProcessUtils::CmdProperties& props) {
    const VariantList* row = props.outputTable.GetFirstRow();
    return row == nullptr ? "(no row)" : row->Get("Output").GetStringValue();
}

/// Answers by a function; registered for its life.
class Monitor final : public IShutdownMonitor {
public:
    explicit Monitor(std::function<bool()> answer) : m_answer(std::move(answer)) {
        ServiceLocator::Put<IShutdownMonitor>(this);
    }
    ~Monitor() override { ServiceLocator::Remove<IShutdownMonitor>(); }
    void RequestShutdown() override {}
    bool IsShutdownRequested() override { return m_answer(); }

private:
    std::function<bool()> m_answer;
};

class ProcessUtilsRun : public testing::Test {
protected:
    std::shared_ptr<ProcessUtils::CmdProperties> Child(const std::string& mode,
                                                       const std::vector<std::string>& arguments = {}) {
        return CommandOf(ChildCommand(mode, arguments), m_log);
    }
    /// "await" or one of its kin; it ends when the test does.
    std::shared_ptr<ProcessUtils::CmdProperties> Waiting(const std::string& mode) {
        return Child(mode, {m_started.string(), m_go.string()});
    }
    /// Whether the process that made the file STARTED lives. Ending it tells, but the
    /// emulator ends what has ended, too; there the file cannot be removed before.
    bool IsStillRunning(const std::shared_ptr<ProcessUtils::CmdProperties>& process) {
        if (!kWindows) return ProcessUtils::KillCommandProcess(process);
        std::error_code error;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (!std::filesystem::remove(m_started, error) && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return static_cast<bool>(error) && ProcessUtils::KillCommandProcess(process);
    }
    std::shared_ptr<ProcessUtils::CmdProperties> Grandchild() {
        auto props = std::make_shared<ProcessUtils::CmdProperties>();
        props->logger = &m_log;
        EXPECT_TRUE(AwaitFile(m_started.string() + ".id"));
        std::ifstream(m_started.string() + ".id") >> props->processId;
        return props;
    }
    void RemoveMarks() {
        std::error_code error;  // one is still held by what is being ended
        while (!std::filesystem::remove(m_started, error) && error) std::this_thread::yield();
        std::filesystem::remove(m_started.string() + ".id", error);
    }
    void TearDown() override { std::ofstream(m_go) << "go"; }

    RecordingLogger m_log;
    TempDir m_dir;
    std::filesystem::path m_started = m_dir.Native("started");
    std::filesystem::path m_go = m_dir.Native("go");
};

TEST_F(ProcessUtilsRun, GivesTheWholeOutputAsOneRow) {
    const auto props = Child("print", {"one|  two ||", "0"});
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_EQ(props->resultCode, 0);
    EXPECT_NE(props->processId, 0u);
    EXPECT_EQ(props->abortEvent, nullptr);
    ASSERT_EQ(props->outputTable.GetNumberOfRows(), 1u);
    EXPECT_THAT(props->outputTable.GetColumnNames(), ElementsAre("ExitCode", "Output"));
    EXPECT_THAT(FirstOutput(*props), AnyOf("one\n  two", "one\r\n  two"));
    EXPECT_THAT(m_log.Lines(), ElementsAre("Running '" + props->command + "'",
                                           "Command '" + props->command + "' has completed"));
}

TEST_F(ProcessUtilsRun, GivesARowALine) {
    const auto props = Child("print", {"a||b|", "3"});
    props->outputAsLines = true;
    props->timeoutSecs = std::numeric_limits<int>::max();
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 3);
    std::vector<std::string> rows;
    for (const VariantList& row : props->outputTable) rows.push_back(row.ToString(",", ""));
    EXPECT_THAT(rows, ElementsAre("3,a,0", "3,,1", "3,b,2"));
    EXPECT_THAT(m_log.Lines(),
                Contains("Command '" + props->command + "' has completed within 2147483647 seconds"));
    EXPECT_THAT(m_log.Lines(), Contains(StartsWith("Output from command: 'a")));
}

TEST_F(ProcessUtilsRun, ATableWithoutRowsHasColumns) {
    const struct {
        bool capture, lines;
        std::vector<std::string> columns;
    } cases[] = {{false, false, {"ExitCode", "Output"}},
                 {false, true, {"ExitCode", "Output", "LineNumber"}},
                 {true, true, {"ExitCode", "Output", "LineNumber"}}};
    for (const auto& c : cases) {
        const auto props = Child("print", {c.capture ? "|" : "seen by nobody", "0"});
        props->captureOutput = c.capture;
        props->outputAsLines = c.lines;
        props->timeoutSecs = -1;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
        EXPECT_TRUE(props->outputTable.Empty());
        EXPECT_EQ(props->outputTable.GetDefaultColumnNames(), c.columns);
    }
}

TEST_F(ProcessUtilsRun, ReportsWhatCannotBeStarted) {
    const struct {
        const char* what;
        std::string command;
        std::wstring directory;
    } cases[] = {{"no such program", "no-such-program-here \"a b\"", L""},
                 {"unbalanced quotes", "\"no such program", L""},
                 {"no such folder", ChildCommand("where"), L"C:\\no such folder"},
                 {"empty", "", L""},
                 {"invalid UTF-8", "a\xFF", L""},
                 {"embedded zero", std::string("a\0b", 3), L""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        m_log.Forget();
        const auto props = CommandOf(c.command, m_log);
        props->workingDirectory = c.directory;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 1);
        EXPECT_EQ(props->processId, 0u);
        EXPECT_EQ(FirstOutput(*props), "");
        EXPECT_THAT(m_log.Lines(Level::Error), ElementsAre(StartsWith("Could not run command '")));
    }
}

TEST_F(ProcessUtilsRun, AProgramsOwnCodesStand) {
    for (const int code : {1, 250, 251, 254}) {
        EXPECT_EQ(ProcessUtils::RunCliCommand(Child("print", {"x", std::to_string(code)})), code);
    }
    if (!kWindows) {
        EXPECT_EQ(ProcessUtils::RunCliCommand(CommandOf("cmd /c kill -9 $$", m_log)), 128 + 9);
    }
}

TEST_F(ProcessUtilsRun, CmdRunsTheSystemsShell) {
    const auto props = CommandOf("CMD.exe /C echo one&& echo two", m_log);
    props->outputAsLines = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_EQ(props->outputTable.GetNumberOfRows(), 2u);
}

TEST_F(ProcessUtilsRun, LogsTheBeginningOfTheOutputOfAFailure) {
    const auto props = Child("print", {std::string(1500, 'x'), "1"});
    ProcessUtils::RunCliCommand(props);
    EXPECT_EQ(FirstOutput(*props).size(), 1500u);
    EXPECT_THAT(m_log.Lines(Level::Debug),
                Contains("Output from command: '" + std::string(1000, 'x') + "...'"));
}

TEST_F(ProcessUtilsRun, KeepsOneLongLineWhole) {
    const auto props = Child("long", {"100000000", "y"});
    props->outputAsLines = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    ASSERT_EQ(props->outputTable.GetNumberOfRows(), 1u);
    EXPECT_EQ(FirstOutput(*props).size(), 100'000'000u);
    EXPECT_EQ(props->outputBytes, 100'000'000u);
}

TEST_F(ProcessUtilsRun, EndsWhatWritesTooMuch) {
    const auto props = Child("flood");
    props->maxOutputBytes = 1000;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), -5);
    EXPECT_TRUE(props->outputTruncated && props->killed);
    EXPECT_FALSE(props->timedOut);
    EXPECT_EQ(props->outputBytes, 1000u);
    EXPECT_LE(FirstOutput(*props).size(), 1000u);
    EXPECT_THAT(m_log.Lines(Level::Warn),
                ElementsAre("Command '" + props->command + "' has written more than 1000 bytes"));
}

TEST_F(ProcessUtilsRun, ReadsNoMoreThanTheLimitOfWhatEndedItself) {
    const struct {
        std::string text;
        std::uint64_t limit;
        std::string expected;
        bool truncated;
    } cases[] = {{"12345", 5, "12345", false}, {"12345", 4, "1234", true}, {"ab~", 3, "ab", true}};
    for (const auto& c : cases) {
        const auto props = Child("print", {c.text, "0"});
        props->maxOutputBytes = c.limit;
        // A slow end gives the runner the time to see the size and to kill.
        const int code = ProcessUtils::RunCliCommand(props);
        EXPECT_EQ(code, props->killed ? -5 : 0);
        EXPECT_EQ(FirstOutput(*props), c.expected);
        EXPECT_EQ(props->outputTruncated, c.truncated);
    }
}

TEST_F(ProcessUtilsRun, FeedsStandardInput) {
    const struct {
        std::optional<std::string> input;
        std::string expected;
    } cases[] = {{"abc", "abc|3"},
                 {"", "|0"},
                 {std::string(5'000'000, 'z'), std::string(20, 'z') + "|5000000"},
                 {std::nullopt, "|0"}};
    for (const auto& c : cases) {
        if (kWindows && !c.input) continue;  // the emulator waits for the invisible console
        const auto props = Child("copy");
        props->standardInput = c.input;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
        std::string output = FirstOutput(*props);
        std::erase(output, '\r');
        std::replace(output.begin(), output.end(), '\n', '|');
        EXPECT_EQ(output, c.expected);
    }
}

TEST_F(ProcessUtilsRun, TheCommandSeesItsFolderAndEnvironment) {
    const auto placed = Child("where");
    const std::string folder = m_dir.Path();
    placed->workingDirectory.assign(folder.begin(), folder.end());
    EXPECT_EQ(ProcessUtils::RunCliCommand(placed), 0);
    EXPECT_TRUE(std::filesystem::equivalent(FirstOutput(*placed), m_dir.Native()));

    const auto given = Child("getenv", {"QUILLON_GIVEN"});
    given->environment = {{"SystemRoot", "C:\\windows"}, {"QUILLON_GIVEN", "a=b c"}};
    if (const char* path = std::getenv("PATH")) given->environment->insert({"PATH", path});
    EXPECT_EQ(ProcessUtils::RunCliCommand(given), 0);
    EXPECT_EQ(FirstOutput(*given), "a=b c");

    const auto wrong = Child("getenv", {"PATH"});
    wrong->environment.emplace()["NAME="] = "value";
    EXPECT_EQ(ProcessUtils::RunCliCommand(wrong), 1);
}

TEST_F(ProcessUtilsRun, KillsWhatOverrunsItsTime) {
    const auto props = Waiting("await");
    props->timeoutSecs = 1;
    props->killOnTimeout = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), -5);
    EXPECT_TRUE(props->timedOut && props->killed);
    EXPECT_FALSE(props->abortedOnShutdown);
    EXPECT_EQ(FirstOutput(*props), "ready");
    const std::string id = std::to_string(props->processId);
    EXPECT_THAT(m_log.Lines(Level::Info),
                ElementsAre("Command '" + props->command + "' timed out after 1 seconds",
                            "Killed command process with PID " + id));
    EXPECT_FALSE(IsStillRunning(props));
}

TEST_F(ProcessUtilsRun, ADetachedWorkerOutlivesItsCaller) {
    auto props = Waiting("await");
    props->timeoutSecs = 1;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), -2);
    EXPECT_TRUE(props->timedOut);
    const std::weak_ptr<ProcessUtils::CmdProperties> worker = props;
    props.reset();
    EXPECT_FALSE(worker.expired());
    std::ofstream(m_go) << "go";
    while (!worker.expired()) std::this_thread::yield();
    EXPECT_THAT(m_log.Lines(Level::Debug), Contains("Output from command: 'ready'"));
}

TEST_F(ProcessUtilsRun, ShutdownEndsTheWait) {
    for (const bool kill : {false, true}) {
        const Monitor monitor([this] { return std::filesystem::exists(m_started); });
        const auto props = Waiting("await");
        props->killOnTimeout = kill;
        props->captureOutput = false;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), -6);
        EXPECT_TRUE(props->abortedOnShutdown);
        EXPECT_EQ(props->killed, kill);
        EXPECT_FALSE(props->timedOut);
        EXPECT_THAT(m_log.Lines(Level::Info),
                    Contains("Aborting command due to shutdown: '" + props->command + "'"));
        EXPECT_EQ(IsStillRunning(props), !kill);
        RemoveMarks();
    }
}

TEST_F(ProcessUtilsRun, AMonitorThatThrowsEndsTheWatch) {
    const Monitor monitor([]() -> bool { throw std::runtime_error("100% broken"); });
    auto props = Child("print", {"x", "0"});
    const std::weak_ptr<ProcessUtils::CmdProperties> worker = props;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), -3);
    EXPECT_THAT(m_log.Lines(Level::Error),
                ElementsAre("Cannot run command '" + props->command + "' because: 100% broken"));
    props.reset();
    while (!worker.expired()) std::this_thread::yield();
}

TEST_F(ProcessUtilsRun, ATreeIsKilledDownToWhatLeftItsGroupAndParents) {
    const std::string leave = ChildCommand("leave", {m_started.string(), m_go.string()});
    const std::string wait = ChildCommand("await", {m_dir.Native("unused").string(), m_go.string()});
    const struct {
        bool tree;
        std::string command;
    } cases[] = {{false, Waiting("parent")->command},
                 {true, Waiting("parent")->command},
                 {true, "cmd /c " + leave + " && " + wait}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        const Monitor monitor([this] { return std::filesystem::exists(m_started.string() + ".id"); });
        const auto props = CommandOf(c.command, m_log);
        props->killOnTimeout = true;
        props->killTree = c.tree;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), -6);
        EXPECT_TRUE(props->killed);
        EXPECT_EQ(IsStillRunning(Grandchild()), !c.tree);
        RemoveMarks();
    }
}

TEST_F(ProcessUtilsRun, WhatAProgramLeavesBehindDoesNotDelayIt) {
    const auto props = Waiting("leave");
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_TRUE(IsStillRunning(Grandchild()));
}

TEST_F(ProcessUtilsRun, ManyRunsAtOnceKeepApart) {
    std::vector<std::thread> callers;
    std::atomic<int> right{0};
    for (int i = 0; i < 8; ++i) {
        callers.emplace_back([this, i, &right] {
            const auto props = Child("print", {"caller " + std::to_string(i), std::to_string(i)});
            if (ProcessUtils::RunCliCommand(props) == i &&
                FirstOutput(*props) == "caller " + std::to_string(i))
                ++right;
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(right, 8);
}

TEST_F(ProcessUtilsRun, ThereMustBeAProcessToKill) {
    const auto props = CommandOf("unused", m_log);
    EXPECT_FALSE(ProcessUtils::KillCommandProcess(props));
    props->processId = 0xFFFFFFF0;
    EXPECT_FALSE(ProcessUtils::KillCommandProcess(props));
    EXPECT_THAT(
        m_log.Lines(Level::Error),
        ElementsAre("Internal error: no PID for command process to be killed",
                    StartsWith("Could not open command process with PID 4294967280 for killing because: ")));
}

TEST(ProcessUtilsResult, SpecialCodesHaveTexts) {
    const struct {
        int code;
        const char* message;
    } cases[] = {{-8, "other"},
                 {-7, "User not logged on"},
                 {-6, "Aborted due to Agent shutdown"},
                 {-5, "Sub-process killed (usually on time-out)"},
                 {-4, "Exit code not set"},
                 {-3, "Could not launch sub-process"},
                 {-2, "Timed out"},
                 {-1, "other"},
                 {0, "other"},
                 {1, "other"}};
    for (const auto& c : cases) {
        ProcessUtils::CmdProperties props;
        EXPECT_EQ(props.resultCode, -4);
        props.resultCode = c.code;
        InvocationResult result;
        ProcessUtils::SetSpecialErrorData(&props, result, "other");
        EXPECT_EQ(result.errorMessage, c.message);
        EXPECT_EQ(result.resultCode, 3);
        result.resultCode = 9;
        ProcessUtils::SetSpecialErrorData(nullptr, result, "late");
        EXPECT_EQ(result.errorMessage, c.message);
        EXPECT_EQ(result.resultCode, 9);
    }
}

TEST(ProcessUtilsResult, TimeOutAndShutdownReplaceTheTable) {
    InvocationResult result;
    ProcessUtils::SetCliTimedOutInvocationResult(90, result);
    EXPECT_EQ(result.errorMessage, "Timed out after 90 seconds");
    EXPECT_EQ(result.resultTable.GetFirstRow()->ToString(",", ""), "-2,Timed out after 90 seconds");
    ProcessUtils::SetCliShutdownAbortInvocationResult(result);
    EXPECT_EQ(result.errorMessage, "Aborted due to Agent shutdown");
    EXPECT_EQ(result.resultCode, 3);
    ASSERT_EQ(result.resultTable.GetNumberOfRows(), 1u);
    EXPECT_EQ(result.resultTable.GetFirstRow()->ToString(",", ""), "-6,Aborted due to Agent shutdown");
}

}  // namespace

}  // namespace quillon::test
