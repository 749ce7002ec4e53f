#include <gmock/gmock.h>

#include <cstdio>

#include "examples/RunAgent.h"
#include "support/ChildMain.h"
#include "support/LogLines.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using Arguments = std::vector<std::string>;

const ChildMode listProcesses("ps", [](const Arguments&) {
    std::printf(
        "USER       PID  RSS MAIN COMMAND\n"
        "root         1   12 true /sbin/init --quiet\n"
        "mary      4711    3 no   vi \"a  b.txt\"\n");
    return 0;
});

const ChildMode listUnits("units", [](const Arguments&) {
    std::printf(
        "UNIT         LOAD   DESCRIPTION\n"
        "cron.service loaded Regular jobs\n"
        "x.mount\n");
    return 0;
});

/// numbers: a table whose first column is aligned to the right.
const ChildMode listNumbers("numbers", [](const Arguments&) {
    std::printf("  1 2.5\n10  -1\n");
    return 0;
});

/// Runs one of the methods of the module Commands.
AgentRun RunMethod(const std::string& method, Arguments arguments) {
    arguments.insert(arguments.begin(), {"run", "Commands." + method});
    return RunAgent(arguments);
}

std::string Command(const std::string& mode, const Arguments& arguments = {}) {
    return "command=" + ChildCommand(mode, arguments);
}

}  // namespace

TEST(Agent, PrintsTheTableThatAMethodAnswersWith) {
    const std::tuple<const char*, Arguments, std::string> cases[] = {
        {"Run",
         {Command("print", {"a|b", "0"}), "lines=true", "--format=csv", "timeout=60"},
         "ExitCode,Output,LineNumber\r\n0,a,0\r\n0,b,1"},  // the runner trims the end
        {"Table",
         {Command("ps"), "skip=1", "--format", "json",
          "columns=USER PID:integer RSS:integer*1024 MAIN:boolean COMMAND:text:rest"},
         R"([{"USER":"root","PID":1,"RSS":12288,"MAIN":true,"COMMAND":"/sbin/init --quiet"},)"
         R"({"USER":"mary","PID":4711,"RSS":3072,"MAIN":false,"COMMAND":"vi \"a  b.txt\""}])"},
        {"Table",
         {Command("units"), "columns=*", "--format", "csv"},
         "UNIT,LOAD,DESCRIPTION\r\ncron.service,loaded,Regular jobs\r\nx.mount,,"},
        {"Table",
         {Command("numbers"), "columns=A:integer B:real*2", "--format", "json"},
         R"([{"A":1,"B":5.0},{"A":10,"B":-2.0}])"},
        {"Table", {Command("ps"), "skip=9", "columns=USER PID:integer", "--format", "csv"}, "USER,PID"},
    };
    for (const auto& [method, arguments, output] : cases) {
        SCOPED_TRACE(output);
        const AgentRun run = RunMethod(method, arguments);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_EQ(run.output, output);
    }
}

TEST(Agent, RefusesABadCallWithCodeTwo) {
    const std::string print = Command("print", {"x", "0"});
    const std::tuple<const char*, Arguments, const char*> cases[] = {
        {"Run", {print, "other=1"}, "Undefined parameter named 'other'"},
        {"Run", {print, "=1"}, "Anonymous parameters are not allowed for this method"},
        {"Run",
         {print, "timeout=2147483648"},
         "'timeout' parameter must be between 0 and 2147483647, not 2147483648"},
        {"Run", {print, "lines"}, "'lines' is not of the form name=value"},
        {"Caf\xC3\xA9", {print}, "Unknown method 'Commands.Caf\xC3\xA9'"},
        {"Table", {print, "columns= "}, "'columns' parameter cannot be empty"},
        {"Table", {print, "columns=A:number"}, "a type that is not text, integer, real, boolean or time"},
        {"Table", {print, "columns=A:text:rest B"}, "'B' of the 'columns' parameter follows one"},
        {"Table", {print, "columns=A:integer*x"}, "a factor that is not a whole number"},
        {"Table", {print, "columns=A:text:0"}, "an extent that is not blank, space, comma"},
        {"Table", {print, "columns=A A"}, "is there twice"},
    };
    for (const auto& [method, arguments, message] : cases) {
        SCOPED_TRACE(message);
        const AgentRun run = RunMethod(method, arguments);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr(message));
    }
    EXPECT_EQ(RunAgent({"run"}).exitCode, 2);
}

TEST(Agent, AFailedCommandGivesCodeThreeAndItsReason) {
    const TempDir dir;
    const std::string wait = Command("await", {dir.Native("started").string(), dir.Native("never").string()});
    const std::string flood = Command("print", {"round and round", "1", "-1"});
    const std::tuple<Arguments, const char*, const char*> cases[] = {
        {{Command("print", {"broken", "7"})}, "7  broken", "Command ended with exit code 7"},
        {{"command=no-such-program"}, "1", "Could not run command 'no-such-program' because: (2/"},
        {{wait, "timeout=1"}, "", "Timed out after 1 seconds"},
        {{flood, "maxOutput=1000"}, "round and round", "Output reached the limit of 1000 bytes"},
    };
    for (const auto& [arguments, output, message] : cases) {
        SCOPED_TRACE(message);
        const AgentRun run = RunMethod("Run", arguments);
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_THAT(run.output, HasSubstr(output));
        EXPECT_THAT(run.errors, HasSubstr(message));
    }
}

TEST(Agent, ShowsWhatACommandHadWrittenBeforeItsTimeWasOver) {
    const TempDir dir;
    const std::filesystem::path started = dir.Native("started");
    const std::string wait = Command("await", {started.string(), dir.Native("never").string()});
    for (const bool asTable : {false, true}) {
        SCOPED_TRACE(asTable);
        std::filesystem::remove(started);
        AgentRun run;
        // Until it was up when its time was over, as it may not be on a busy machine.
        for (int limit = 1; limit <= 64 && !std::filesystem::exists(started); limit *= 2) {
            Arguments arguments{wait, "timeout=" + std::to_string(limit), "--format", "csv"};
            if (asTable) arguments.emplace_back("columns=WORD");
            run = RunMethod(asTable ? "Table" : "Run", arguments);
        }
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_EQ(run.output, asTable ? "WORD\r\nready" : "ExitCode,Output\r\n-5,ready");
        EXPECT_THAT(run.errors, HasSubstr("Timed out after "));
    }
    if (kWindows) return;  // whose shell has no such commands
    const AgentRun lines = RunMethod(
        "Run", {"command=cmd /c echo; echo second; sleep 60", "timeout=2", "lines=true", "--format", "csv"});
    EXPECT_EQ(lines.output, "ExitCode,Output,LineNumber\r\n-5,\"\",0\r\n-5,second,1");
}

TEST(Agent, LogsToTheFileAndStandardErrorButNeverIntoTheTable) {
    const TempDir dir;
    const AgentRun run = RunMethod("Run", {Command("print", {"x", "0"}), "--format", "json", "--level",
                                           "DEBUG", "--log", dir.Native("agent.log").string()});
    EXPECT_EQ(run.output, R"([{"ExitCode":0,"Output":"x"}])");
    EXPECT_THAT(run.errors, HasSubstr("DEBUG - Running '"));
    const std::vector<std::string> entries = EntriesOf(dir.Read("agent.log"));
    EXPECT_THAT(entries, testing::Contains(StartsWith("DEBUG - Running '")));
    EXPECT_THAT(entries.at(1), StartsWith("INFO  - Quillon Client v1.0.0.0 on "));
}

TEST(Agent, LogIsAtInfoUnlessTheConfigurationSaysOtherwise) {
    const TempDir dir;
    dir.Write("silent.json", "{}");
    dir.Write("warn.json", R"({"loggingLevel": "warn"})");
    for (const std::string name : {"silent", "warn"}) {
        const std::string log = dir.Native(name).string();
        EXPECT_EQ(
            RunAgent({"run", "System.Echo", "text=x", "--log", log, "--config", log + ".json"}).exitCode, 0);
    }
    EXPECT_THAT(dir.Read("silent"), HasSubstr("INFO  - Quillon Client"));
    EXPECT_EQ(dir.Read("warn"), "");
}

TEST(Agent, LogMayBeJsonAndEndsTheAgentWhenItCannotBeOpened) {
    const TempDir dir;
    const AgentRun run = RunAgent(
        {"run", "System.Echo", "text=x", "--log-format", "json", "--log", dir.Native("log").string()});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(LinesOf(dir.Read("log")),
                testing::Each(AllOf(StartsWith("{\"time\":\""), testing::EndsWith("\"}"))));
    const AgentRun refused = RunAgent({"run", "System.Echo", "text=x", "--log", dir.Native().string()});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors, AllOf(HasSubstr("Cannot open the log '"), HasSubstr("': ")));
    EXPECT_EQ(refused.output, "");
}

TEST(Agent, WithoutALogFileOnlyWarningsReachStandardError) {
    EXPECT_THAT(RunMethod("Run", {"command=no-such-program"}).errors,
                StartsWith("ERROR Could not run command 'no-such-program' because: "));
    EXPECT_THAT(RunMethod("Run", {Command("print", {"x", "0"}), "--level=debug"}).errors,
                HasSubstr("DEBUG Running '"));
}

TEST(Agent, CtrlCAbortsTheRunningCommand) {
    if (kWindows) GTEST_SKIP() << "console control events cannot be sent to one process only";
    for (const std::string signal : {"INT", "TERM"}) {
        SCOPED_TRACE(signal);
        // The command itself interrupts the agent that runs it: no race to win.
        const std::string command = "command=cmd /c kill -" + signal + " $PPID; sleep 300";
        const AgentRun run = RunLine(AgentCommand({"run", "Commands.Run", command}).Get());
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_THAT(run.output, AllOf(HasSubstr("-6  Aborted due to Agent shutdown"),
                                      HasSubstr("\nAborted due to Agent shutdown")));
    }
}

}  // namespace quillon::test
