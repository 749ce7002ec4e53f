#include <cstdio>
#include <exception>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "cli/CommandLine.h"
#include "cli/Output.h"
#include "host/AgentConfiguration.h"
#include "host/Host.h"
#include "quillon/PathUtils.h"
#include "serve/Server.h"
#include "system/Console.h"

namespace quillon::agent {

namespace {

constexpr int kAgentFailed = 1;

AgentConfiguration Configure(const HostOptions& options) {
    AgentConfiguration configuration = options.configuration.empty()
                                           ? AgentConfiguration()
                                           : AgentConfiguration::Load(options.configuration);
    if (!options.modules.empty()) configuration.SetModuleDirectory(options.modules);
    return configuration;
}

std::string DatabaseFolderOf(const HostOptions& options) {
    if (options.data.empty()) return Host::DefaultDatabaseFolder();
    return PathUtils::CombinePaths(options.data, Host::kDatabaseFolder, PathUtils::PathSep);
}

LogSettings LogSettingsOf(const HostOptions& options, const AgentConfiguration& configuration) {
    LogSettings log = options.log;
    if (configuration.IsLoggingLevelGiven() && !log.level)
        log.level = static_cast<ICLogger::Level>(configuration.GetLoggingLevel());
    return log;
}

int Execute(const RunCommand& command, Output& output) {
    const AgentConfiguration configuration = Configure(command.host);
    const Host host(LogSettingsOf(command.host, configuration), DatabaseFolderOf(command.host),
                    configuration);
    const InvocationResult result = host.Run(command.method, command.arguments);
    output.Write(result.resultTable, command.format);
    if (!result.errorMessage.empty()) std::fprintf(stderr, "%s\n", result.errorMessage.c_str());
    return result.resultCode;
}

int Execute(const ServeCommand& command, Output& output) {
    const AgentConfiguration configuration = Configure(command.host);
    const Host host(LogSettingsOf(command.host, configuration), DatabaseFolderOf(command.host),
                    configuration);
    return Serve(host, command.settings, [&output](std::string_view text) {
        try {
            output.Write(text);
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    });
}

int Execute(const MethodsCommand& command, Output& output) {
    const Host host({}, Host::DefaultDatabaseFolder(), Configure(command.host));
    output.Write(DescribeMethods(host.GetModules(), command.format));
    return 0;
}

int Execute(const UsageMessage& message, Output& output) {
    if (message.exitCode == 0) {
        output.Write(message.text);
    } else {
        std::fputs(message.text.c_str(), stderr);
    }
    return message.exitCode;
}

int Main(int argc, char** argv) {
    SecureStandardStreams();
    Output output;
    const CommandLine commandLine = ParseCommandLine(GetArguments(argc, argv));
    return std::visit([&output](const auto& command) { return Execute(command, output); }, commandLine);
}

}  // namespace

}  // namespace quillon::agent

int main(int argc, char** argv) {
    try {
        return quillon::agent::Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillon-agent: %s\n", error.what());
        return quillon::agent::kAgentFailed;
    }
}
