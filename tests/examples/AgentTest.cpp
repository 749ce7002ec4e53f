#include <gmock/gmock.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "examples/RunAgent.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using nlohmann::ordered_json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const ChildMode listProcesses("ps", [](const std::vector<std::string>&) {
    std::printf(
        "USER       PID  RSS MAIN COMMAND\n"
        "root         1   12 true /sbin/init --quiet\n"
        "mary      4711    3 no   vi \"a  b.txt\"\n");
    return 0;
});

std::vector<std::string> RunCommandArguments(const std::string& command,
                                             const std::vector<std::string>& further = {}) {
    std::vector<std::string> arguments = {"run", "Commands.Run", "command=" + command};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return arguments;
}

}  // namespace

TEST(Agent, RunsACommandByLinesAndPrintsJson) {
    const AgentRun run = RunAgent(RunCommandArguments(ChildCommand("print", {"first||third", "0"}),
                                                      {"lines=true", "timeout=60", "--format", "json"}));
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(ordered_json::parse(run.output).dump(),
              "[{\"ExitCode\":0,\"Output\":\"first\",\"LineNumber\":0},"
              "{\"ExitCode\":0,\"Output\":\"\",\"LineNumber\":1},"
              "{\"ExitCode\":0,\"Output\":\"third\",\"LineNumber\":2}]");
}

TEST(Agent, CsvKeepsItsOwnLineEnds) {
    const AgentRun run =
        RunAgent(RunCommandArguments(ChildCommand("print", {"a|b", "0"}), {"lines=true", "--format=csv"}));
    EXPECT_EQ(run.output, "ExitCode,Output,LineNumber\r\n0,a,0\r\n0,b,1");  // the runner trims the end
}

TEST(Agent, ParsesACommandsOutputIntoTypedColumns) {
    const AgentRun run = RunAgent({"run", "Commands.Table", "command=" + ChildCommand("ps"), "skip=1",
                                   "columns=USER PID:integer RSS:integer*1024 MAIN:boolean COMMAND:text:rest",
                                   "--format", "json"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(ordered_json::parse(run.output).dump(),
              R"([{"USER":"root","PID":1,"RSS":12288,"MAIN":true,"COMMAND":"/sbin/init --quiet"},)"
              R"({"USER":"mary","PID":4711,"RSS":3072,"MAIN":false,"COMMAND":"vi \"a  b.txt\""}])");
}

TEST(Agent, ATableWithoutRowsStillHasItsColumns) {
    const AgentRun run = RunAgent({"run", "Commands.Table", "command=" + ChildCommand("ps"), "skip=9",
                                   "columns=USER PID:integer", "--format", "csv"});
    EXPECT_EQ(run.output, "USER,PID");
}

TEST(Agent, RefusesABadCallWithCodeTwo) {
    const std::string print = "command=" + ChildCommand("print", {"x", "0"});
    const struct {
        std::vector<std::string> arguments;
        const char* message;
    } cases[] = {
        {{"Commands.Run"}, "Missing parameter 'command'"},
        {{"Commands.Run", print, "other=1"}, "Undefined parameter named 'other'"},
        {{"Commands.Run", print, print}, "Parameter 'command' is specified more than once"},
        {{"Commands.Run", print, "timeout=soon"}, "Parameter 'timeout' must be an integer, not 'soon'"},
        {{"Commands.Run", print, "timeout=5s"}, "Parameter 'timeout' must be an integer, not '5s'"},
        {{"Commands.Run", print, "=1"}, "Anonymous parameters are not allowed for this method"},
        {{"Commands.Run", print, "timeout=2147483648"}, "'timeout' parameter must be from 0 to 2147483647"},
        {{"Commands.Run", print, "lines"}, "'lines' is not of the form name=value"},
        {{"Commands.Caf\xC3\xA9", print}, "Unknown method 'Commands.Caf\xC3\xA9'"},
        {{}, "method is required"},
        {{"Commands.Table", print, "columns= "}, "'columns' parameter cannot be empty"},
        {{"Commands.Table", print, "columns=A:number"}, "a type that is not text, integer or boolean"},
        {{"Commands.Table", print, "columns=A:text:rest B"}, "'B' of the 'columns' parameter follows one"},
        {{"Commands.Table", print, "columns=A:integer*x"}, "a factor that is not a whole number"},
        {{"Commands.Table", print, "columns=A A"}, "is there twice"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        std::vector<std::string> arguments = {"run"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const AgentRun run = RunAgent(arguments);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.output, IsEmpty());
        EXPECT_THAT(run.errors, HasSubstr(c.message));
    }
}

TEST(Agent, AFailedCommandGivesCodeThreeAndItsReason) {
    const TempDir dir;
    const std::string wait =
        ChildCommand("await", {dir.Native("started").string(), dir.Native("never").string()});
    const struct {
        std::vector<std::string> arguments;
        const char* output;
        const char* message;
    } cases[] = {
        {RunCommandArguments(ChildCommand("print", {"broken", "7"})), "7  broken",
         "Command ended with exit code 7"},
        {RunCommandArguments("no-such-program"), "1", "Could not run command 'no-such-program'"},
        {RunCommandArguments(wait, {"timeout=1"}), "-2  Timed out after 1 seconds",
         "Timed out after 1 seconds"},
        {RunCommandArguments(ChildCommand("flood"), {"maxOutput=1000"}), "round and round",
         "Output reached the limit of 1000 bytes"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const AgentRun run = RunAgent(c.arguments);
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_THAT(run.output, HasSubstr(c.output));
        EXPECT_THAT(run.errors, HasSubstr(c.message));
    }
}

TEST(Agent, LogsToTheFileAndStandardErrorButNeverIntoTheTable) {
    const TempDir dir;
    const AgentRun run = RunAgent(RunCommandArguments(
        ChildCommand("print", {"x", "0"}),
        {"--format", "json", "--level", "DEBUG", "--log", dir.Native("agent.log").string()}));
    EXPECT_EQ(ordered_json::parse(run.output).dump(), R"([{"ExitCode":0,"Output":"x"}])");
    EXPECT_THAT(run.errors, HasSubstr("DEBUG - Running '"));

    const std::regex pattern(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[ *\d+\] [A-Z]+ +- .*\r?)");
    const std::string log = dir.Read("agent.log");
    EXPECT_THAT(log, HasSubstr("Running '"));
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) EXPECT_TRUE(std::regex_match(line, pattern)) << line;
}

TEST(Agent, WithoutALogFileOnlyWarningsReachStandardError) {
    EXPECT_THAT(RunAgent(RunCommandArguments("no-such-program")).errors,
                StartsWith("ERROR Could not run command 'no-such-program' because: "));
    EXPECT_THAT(RunAgent(RunCommandArguments(ChildCommand("print", {"x", "0"}), {"--level=debug"})).errors,
                HasSubstr("DEBUG Running '"));
}

TEST(Agent, CtrlCAbortsTheRunningCommand) {
    if (kWindows) GTEST_SKIP() << "console control events cannot be sent to one process only";
    for (const char* signal : {"INT", "TERM"}) {
        SCOPED_TRACE(signal);
        // The command itself interrupts the agent that runs it: no race to win.
        const std::string command = std::string("cmd /c kill -") + signal + " $PPID; sleep 300";
        const AgentRun run = RunLine(AgentCommand(RunCommandArguments(command)).Get());
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_THAT(run.output, AllOf(HasSubstr("-6  Aborted due to Agent shutdown"),
                                      HasSubstr("\nAborted due to Agent shutdown")));
    }
}

TEST(Agent, HelpIsAResultAndGoesToStandardOutput) {
    const AgentRun run = RunAgent({"run", "--help"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, HasSubstr("--format"));
    EXPECT_THAT(run.errors, IsEmpty());
}

}  // namespace quillon::test
