#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "cli/CommandLine.h"

namespace quillon::agent {

/// The sub-commands with their options, and the commands that a parsed line fills.
struct AgentApp {
    AgentApp();
    AgentApp(const AgentApp&) = delete;
    AgentApp& operator=(const AgentApp&) = delete;

    CLI::App app;
    RunCommand run;
    MethodsCommand methods;
    ServeCommand serve;
    ServiceCommand service;
    std::string shell;
};

/// Returns the names of the sub-commands, and the options of one, each with its dashes.
std::vector<std::string> SubCommandNames(const CLI::App& app);
std::vector<std::string> OptionNames(const CLI::App& subCommand);

/// Returns the sub-command of a name, or null.
const CLI::App* FindSubCommand(const CLI::App& app, const std::string& name);

}  // namespace quillon::agent
