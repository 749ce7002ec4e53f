#pragma once

#include <string>
#include <vector>

#include "quillon/CommandLineBuilder.h"

namespace quillon::test {

struct AgentRun {
    int exitCode = 0;
    std::string output, errors;
};

CommandLineBuilder AgentCommand(const std::vector<std::string>& arguments);

/// Runs a command line; what it writes to standard error is in the output.
AgentRun RunLine(const std::string& commandLine);

/// Runs the agent as a process of its own. The shell keeps its standard error
/// apart, so arguments must hold nothing that a shell expands.
AgentRun RunAgent(const std::vector<std::string>& arguments);

}  // namespace quillon::test
