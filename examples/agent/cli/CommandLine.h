#pragma once

#include <string>
#include <variant>
#include <vector>

#include "cli/MethodList.h"
#include "cli/Output.h"
#include "host/Logging.h"
#include "serve/Server.h"

namespace quillon::agent {

/// What every sub-command takes to set up the host.
struct HostOptions {
    std::string configuration;  ///< a file; empty: settings that are safe
    std::string modules;        ///< a directory; empty: the configuration's
    std::string data;           ///< a directory; empty: the agent's own
    LogSettings log;
};

/// "quillon-agent run ..."
struct RunCommand {
    HostOptions host;
    std::string method;                  ///< "Module.Method"
    std::vector<std::string> arguments;  ///< "name=value", each with its '='
    Format format = Format::Text;
};

/// "quillon-agent methods ..."
struct MethodsCommand {
    HostOptions host;
    ListFormat format = ListFormat::Text;
};

/// "quillon-agent serve ..."
struct ServeCommand {
    HostOptions host;
    ServeSettings settings;
};

/// Holds a text to print in place of a command: help that was asked for (code 0), or the fault of the
/// command line (code 2, as for any bad call).
struct UsageMessage {
    int exitCode = 0;
    std::string text;
};

using CommandLine = std::variant<RunCommand, MethodsCommand, ServeCommand, UsageMessage>;

/// `arguments` are those after the program's name.
CommandLine ParseCommandLine(std::vector<std::string> arguments);

}  // namespace quillon::agent
