#include "examples/RunAgent.h"
#include "examples/Emulator.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

/// The emulator now and then starts no process: four of some thousand tests failed by it.
int Attempts() { return IsEmulated() ? 3 : 1; }

/// What cmd answers then.
constexpr int kStartedNothing = 9009;

}  // namespace

CommandLineBuilder AgentCommand(const std::vector<std::string>& arguments) {
    const std::filesystem::path agent = ProgramFolder() / (kWindows ? "quillon-agent.exe" : "quillon-agent");
    CommandLineBuilder command(agent.string());
    for (const std::string& argument : arguments) command.Add(argument);
    return command;
}

AgentRun RunLine(const std::string& commandLine) {
    for (int attempt = 1;; ++attempt) {
        RecordingLogger log;
        const auto properties = CommandOf(commandLine, log);
        properties->timeoutSecs = 120;
        properties->killOnTimeout = properties->killTree = true;
        const int code = ProcessUtils::RunCliCommand(properties);
        const std::vector<std::string> errors = log.Lines(ICLogger::Level::Error);
        if (properties->startError != 0 && attempt < Attempts()) {
            std::cout << errors.front() << std::endl;
            continue;
        }
        for (const std::string& error : errors) ADD_FAILURE() << error;
        return {code, properties->outputTable.begin()->Get(ProcessUtils::OutputColName).GetStringValue(), {}};
    }
}

AgentRun RunAgent(const std::vector<std::string>& arguments) {
    const TempDir dir;
    const std::string line = AgentCommand(arguments).Get() + " 2>\"" + dir.Native("errors").string() + '"';
    AgentRun run;
    for (int attempt = 1; attempt <= Attempts(); ++attempt) {
        run = RunLine("cmd /c \"" + line + '"');
        if (run.exitCode != kStartedNothing) break;
    }
    run.errors = dir.Read("errors");
    return run;
}

}  // namespace quillon::test
