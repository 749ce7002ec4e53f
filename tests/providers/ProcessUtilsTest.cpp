#include "quillon/ProcessUtils.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <limits>

#include "quillon/DataTableIO.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;
using Level = ICLogger::Level;
using Properties = std::shared_ptr<ProcessUtils::CmdProperties>;

std::string FirstOutput(const Properties& props) {
    const VariantList* row = props->outputTable.GetFirstRow();
    return row == nullptr ? "(no row)" : row->Get("Output").GetStringValue();
}

class ProcessUtilsRun : public testing::Test {
protected:
    Properties Child(const std::string& mode, const std::vector<std::string>& arguments = {}) {
        return CommandOf(ChildCommand(mode, arguments), m_log);
    }
    /// "await" or one of its kin; it ends when the test does.
    Properties Waiting(const std::string& mode) { return Child(mode, {m_started.string(), m_go.string()}); }
    /// Runs "await" with longer and longer times until it was up when its time was over, as it may not be
    /// on a busy machine.
    Properties RunUntilLate(bool kill, int expected) {
        for (int limit = 1;; limit *= 2) {
            const auto props = Waiting("await");
            props->timeoutSecs = limit;
            props->killOnTimeout = kill;
            EXPECT_EQ(ProcessUtils::RunCliCommand(props), expected);
            if (HasStarted() || limit > 60) return props;
            m_log.Forget();
        }
    }
    /// Whether the file STARTED tells the process: one that is killed between making and writing it never
    /// does.
    bool HasStarted() const {
        std::error_code error;
        const auto size = fs::file_size(m_started, error);
        return !error && size > 0;
    }
    /// The process that made the file STARTED.
    Properties Started() {
        const auto process = std::make_shared<ProcessUtils::CmdProperties>();
        EXPECT_TRUE(AwaitFile(m_started));
        while (!(std::ifstream(m_started) >> process->processId)) std::this_thread::yield();
        return process;
    }
    /// Whether the process that made the file STARTED lives, or comes to its end. Ending it tells, but the
    /// emulator ends what has ended, too; there the file cannot be removed before.
    bool IsStillRunning() { return !CanRemoveStarted(std::chrono::seconds(2)) && EndStarted(); }
    bool HasEnded() { return kWindows ? CanRemoveStarted(std::chrono::seconds(60)) : !EndStarted(); }
    bool CanRemoveStarted(std::chrono::seconds limit) {
        if (!kWindows) return false;
        Started();
        std::error_code error;
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!fs::remove(m_started, error) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return !error;
    }
    bool EndStarted() { return ProcessUtils::KillCommandProcess(Started()); }
    void TearDown() override { std::ofstream(m_go) << "go"; }

    RecordingLogger m_log;
    TempDir m_dir;
    fs::path m_started = m_dir.Native("started");
    fs::path m_go = m_dir.Native("go");
};

TEST_F(ProcessUtilsRun, GivesTheWholeOutputAsOneRow) {
    const auto props = Child("print", {"one|  two ||", "0"});
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
    EXPECT_EQ(props->resultCode, 0);
    EXPECT_NE(props->processId, 0u);
    EXPECT_EQ(props->abortEvent, nullptr);
    ASSERT_EQ(props->outputTable.GetNumberOfRows(), 1u);
    EXPECT_THAT(props->outputTable.GetColumnNames(), ElementsAre("ExitCode", "Output"));
    EXPECT_THAT(FirstOutput(props), testing::AnyOf("one\n  two", "one\r\n  two"));
    EXPECT_THAT(m_log.Lines(), ElementsAre("Running '" + props->command + "'",
                                           "Command '" + props->command + "' has completed"));
}

TEST_F(ProcessUtilsRun, GivesARowALine) {
    const auto props = Child("print", {"a||b|", "3"});
    props->outputAsLines = true;
    props->timeoutSecs = std::numeric_limits<int>::max();
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 3);
    EXPECT_EQ(ToCsv(props->outputTable), "ExitCode,Output,LineNumber\r\n3,a,0\r\n3,\"\",1\r\n3,b,2\r\n");
    EXPECT_THAT(m_log.Lines(),
                Contains("Command '" + props->command + "' has completed within 2147483647 seconds"));
    EXPECT_THAT(m_log.Lines(), Contains(StartsWith("Output from command: 'a")));
}

TEST_F(ProcessUtilsRun, ATableWithoutRowsHasColumns) {
    for (const bool byLines : {false, true}) {
        SCOPED_TRACE(byLines);
        const auto props = Child("print", {byLines ? "|" : "seen by nobody", "0"});
        props->captureOutput = props->outputAsLines = byLines;
        props->timeoutSecs = -1;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
        EXPECT_EQ(ToCsv(props->outputTable),
                  byLines ? "ExitCode,Output,LineNumber\r\n" : "ExitCode,Output\r\n");
    }
}

TEST_F(ProcessUtilsRun, ReportsWhatCannotBeStarted) {
    const std::tuple<const char*, std::string, std::wstring> cases[] = {
        {"no such program", "no-such-program-here \"a b\"", L""},
        {"unbalanced quotes", "\"no such program", L""},
        {"no such folder", ChildCommand("copy"), L"C:\\no such folder"},
        {"empty", "", L""},
        {"invalid UTF-8", "a\xFF", L""},
        {"embedded zero", std::string("a\0b", 3), L""}};
    for (const auto& [what, command, directory] : cases) {
        SCOPED_TRACE(what);
        m_log.Forget();
        const auto props = CommandOf(command, m_log);
        props->workingDirectory = directory;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 1);
        EXPECT_EQ(props->processId, 0u);
        EXPECT_EQ(FirstOutput(props), "");
        EXPECT_THAT(m_log.Lines(Level::Error), ElementsAre(StartsWith("Could not run command '")));
    }
}

TEST_F(ProcessUtilsRun, AProgramsOwnCodesStand) {
    for (const int code : {1, 250, 251, 254})
        EXPECT_EQ(ProcessUtils::RunCliCommand(Child("print", {"x", std::to_string(code)})), code) << code;
}

TEST_F(ProcessUtilsRun, KeepsOneLongLineWholeAndLogsTheBeginningOfAFailures) {
    const auto props = Child("print", {std::string(1000, 'y'), "1", "100000"});
    props->outputAsLines = true;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), 1);
    ASSERT_EQ(props->outputTable.GetNumberOfRows(), 1u);
    EXPECT_EQ(FirstOutput(props).size(), 100'000'000u);
    EXPECT_EQ(props->outputBytes, 100'000'000u);
    EXPECT_THAT(m_log.Lines(), Contains("Output from command: '" + std::string(1000, 'y') + "...'"));
}

TEST_F(ProcessUtilsRun, EndsWhatWritesTooMuch) {
    const auto props = Child("print", {"round and round|", "0", "-1"});
    props->maxOutputBytes = 1000;
    EXPECT_EQ(ProcessUtils::RunCliCommand(props), -5);
    EXPECT_TRUE(props->outputTruncated && props->killed);
    EXPECT_FALSE(props->timedOut);
    EXPECT_EQ(props->outputBytes, 1000u);
    EXPECT_LE(FirstOutput(props).size(), 1000u);
    EXPECT_THAT(m_log.Lines(Level::Warn),
                ElementsAre("Command '" + props->command + "' has written more than 1000 bytes"));
}

TEST_F(ProcessUtilsRun, ReadsNoMoreThanTheLimitOfWhatEndedItself) {
    const std::tuple<std::string, std::uint64_t, std::string, bool> cases[] = {
        {"12345", 5, "12345", false}, {"12345", 4, "1234", true}, {"ab~", 3, "ab", true}};
    for (const auto& [text, limit, expected, truncated] : cases) {
        SCOPED_TRACE(text);
        const auto props = Child("print", {text, "0"});
        props->maxOutputBytes = limit;
        // A slow end gives the runner the time to see the size and to kill, be it what has just ended.
        const int code = ProcessUtils::RunCliCommand(props);
        EXPECT_TRUE(code == 0 || (code == -5 && props->killed)) << code;
        EXPECT_EQ(FirstOutput(props), expected);
        EXPECT_EQ(props->outputTruncated, truncated);
    }
}

TEST_F(ProcessUtilsRun, FeedsStandardInput) {
    const std::pair<std::optional<std::string>, std::string> cases[] = {
        {"abc", "abc|3"},
        {"", "|0"},
        {std::string(5'000'000, 'z'), std::string(20, 'z') + "|5000000"},
        {std::nullopt, "|0"}};
    for (const auto& [input, expected] : cases) {
        SCOPED_TRACE(expected);
        const auto props = Child("copy");
        props->standardInput = input;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
        EXPECT_EQ(FirstOutput(props), expected);
    }
}

TEST_F(ProcessUtilsRun, TheCommandSeesItsFolderAndEnvironment) {
    const auto placed = CommandOf(kWindows ? "cmd /c cd" : "pwd", m_log);
    const std::string folder = m_dir.Path();
    placed->workingDirectory.assign(folder.begin(), folder.end());
    EXPECT_EQ(ProcessUtils::RunCliCommand(placed), 0);
    EXPECT_TRUE(fs::equivalent(FirstOutput(placed), m_dir.Native()));

    const auto given = Child("getenv", {"QUILLON_GIVEN"});
    given->environment = {
        {"SystemRoot", "C:\\windows"}, {"QUILLON_GIVEN", "a=b c"}, {"Quillon_Given", "the last"}};
    if (const char* path = std::getenv("PATH")) given->environment->insert({"PATH", path});
    EXPECT_EQ(ProcessUtils::RunCliCommand(given), 0);
    EXPECT_EQ(FirstOutput(given), kWindows ? "the last" : "a=b c");

    const auto wrong = Child("getenv", {"PATH"});
    wrong->environment.emplace()["NAME="] = "value";
    EXPECT_EQ(ProcessUtils::RunCliCommand(wrong), 1);
}

TEST_F(ProcessUtilsRun, KillsWhatOverrunsItsTime) {
    const auto props = RunUntilLate(true, -5);
    EXPECT_TRUE(props->timedOut && props->killed);
    EXPECT_FALSE(props->abortedOnShutdown);
    EXPECT_EQ(FirstOutput(props), "ready");
    EXPECT_THAT(m_log.Lines(Level::Info),
                ElementsAre("Command '" + props->command + "' timed out after " +
                                std::to_string(props->timeoutSecs) + " seconds",
                            "Killed command process with PID " + std::to_string(props->processId)));
    EXPECT_TRUE(HasEnded());
}

TEST_F(ProcessUtilsRun, ADetachedWorkerOutlivesItsCaller) {
    auto props = RunUntilLate(false, -2);
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
        SCOPED_TRACE(kill);
        m_started = m_dir.Native(kill ? "killed" : "left");
        const Monitor monitor([this] { return HasStarted(); });
        const auto props = Waiting("await");
        props->killOnTimeout = kill;
        props->captureOutput = false;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), -6);
        EXPECT_TRUE(props->abortedOnShutdown);
        EXPECT_EQ(props->killed, kill);
        EXPECT_TRUE(!kill || props->resultCode == -6) << props->resultCode;
        EXPECT_FALSE(props->timedOut);
        EXPECT_THAT(m_log.Lines(Level::Info),
                    Contains("Aborting command due to shutdown: '" + props->command + "'"));
        EXPECT_TRUE(kill ? HasEnded() : IsStillRunning());
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
    EXPECT_TRUE(worker.expired()) << "the worker goes on, and uses a logger that may be gone";
}

TEST_F(ProcessUtilsRun, ATreeIsKilledDownToWhatLeftItsGroupAndParents) {
    for (const bool tree : {false, true}) {
        SCOPED_TRACE(tree);
        const fs::path second = m_dir.Native(tree ? "second of a tree" : "second");
        m_started = m_dir.Native(tree ? "first of a tree" : "first");
        const Monitor monitor([&second] { return fs::exists(second); });
        const auto props = CommandOf("CMD.exe /C " + Waiting("leave")->command + " && " +
                                         ChildCommand("await", {second.string(), m_go.string()}),
                                     m_log);
        props->killOnTimeout = true;
        props->killTree = tree;
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), -6);
        EXPECT_TRUE(props->killed);
        EXPECT_TRUE(tree ? HasEnded() : IsStillRunning());
    }
}

TEST_F(ProcessUtilsRun, WhatAProgramLeavesBehindDoesNotDelayIt) {
    const std::pair<const char*, const char*> cases[] = {{"leave", ""}, {"share", "ready"}};
    for (const auto& [mode, output] : cases) {
        SCOPED_TRACE(mode);
        m_started = m_dir.Native(mode);
        const auto props = Waiting(mode);
        EXPECT_EQ(ProcessUtils::RunCliCommand(props), 0);
        EXPECT_EQ(FirstOutput(props), output);
        EXPECT_TRUE(IsStillRunning());
    }
}

TEST_F(ProcessUtilsRun, ManyRunsAtOnceKeepApart) {
    std::atomic<int> right{0};
    Threads(8, [this, &right](int i) {
        const auto props = Child("print", {"caller " + std::to_string(i), std::to_string(i)});
        const int code = ProcessUtils::RunCliCommand(props);
        if (code == i && FirstOutput(props) == "caller " + std::to_string(i)) ++right;
    }).Join();
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
    const std::pair<int, const char*> cases[] = {
        {-8, "other"}, {-7, "User not logged on"}, {-2, "Timed out"}, {-1, "other"}};
    for (const auto& [code, message] : cases) {
        SCOPED_TRACE(code);
        ProcessUtils::CmdProperties props;
        props.resultCode = code;
        InvocationResult result;
        ProcessUtils::SetSpecialErrorData(&props, result, "other");
        EXPECT_EQ(result.errorMessage, message);
        EXPECT_EQ(result.resultCode, 3);
        result.resultCode = 9;
        ProcessUtils::SetSpecialErrorData(nullptr, result, "late");
        EXPECT_EQ(result.errorMessage, message);
        EXPECT_EQ(result.resultCode, 9);
    }
}

TEST(ProcessUtilsResult, TimeOutAndShutdownReplaceTheTable) {
    InvocationResult result;
    ProcessUtils::SetCliTimedOutInvocationResult(90, result);
    EXPECT_EQ(result.errorMessage, "Timed out after 90 seconds");
    EXPECT_EQ(ToCsv(result.resultTable), "ExitCode,Output\r\n-2,Timed out after 90 seconds\r\n");
    ProcessUtils::SetCliShutdownAbortInvocationResult(result);
    EXPECT_EQ(result.errorMessage, "Aborted due to Agent shutdown");
    EXPECT_EQ(result.resultCode, 3);
    EXPECT_EQ(ToCsv(result.resultTable), "ExitCode,Output\r\n-6,Aborted due to Agent shutdown\r\n");
}

}  // namespace

}  // namespace quillon::test
