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
    std::string prefix;  ///< of the methods that are wanted; a whole name is one as well
    ListFormat format = ListFormat::Text;
};

/// "quillon-agent serve ..."
struct ServeCommand {
    HostOptions host;
    ServeSettings settings;
};

/// "quillon-agent completion ...": what could stand for the last word of a command line.
struct CompletionCommand {
    std::vector<std::string> words;  ///< after the program's name
};

/// "quillon-agent service ...", on Windows
struct ServiceCommand {
    enum class Action { Install, Remove, Run };

    Action action = Action::Run;
    ServeCommand serve;
    std::vector<std::string> options;  ///< those of serve, as they were given
};

/// Holds a text to print in place of a command: help that was asked for (code 0), or the fault of the
/// command line (code 2, as for any bad call).
struct UsageMessage {
    int exitCode = 0;
    std::string text;
};

using CommandLine =
    std::variant<RunCommand, MethodsCommand, ServeCommand, ServiceCommand, CompletionCommand, UsageMessage>;

/// Reads a command line; `arguments` are those after the program's name.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace quillon::agent
