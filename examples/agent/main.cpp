#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "cli/CommandLine.h"
#include "cli/Completion.h"
#include "cli/Output.h"
#include "common/ShownText.h"
#include "common/Suggestion.h"
#include "host/AgentConfiguration.h"
#include "host/Host.h"
#include "quillon/LogText.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "serve/Server.h"
#include "system/Console.h"
#include "system/Heap.h"
#include "system/Service.h"
#include "system/SharedLibrary.h"

namespace quillon::agent {

namespace {

constexpr int kAgentFailed = 1;
constexpr const char* kServiceAddress = R"(\\.\pipe\quillon-agent)";

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

/// Linux keeps eight bits of an exit code: 256 would become 0, which is success.
int ExitCodeOf(std::int32_t resultCode) {
    constexpr std::int32_t kLargest = 255;
    return resultCode >= 0 && resultCode <= kLargest ? resultCode : kLargest;
}

int Execute(const RunCommand& command, Output& output) {
    const AgentConfiguration configuration = Configure(command.host);
    const Host host(LogSettingsOf(command.host, configuration), DatabaseFolderOf(command.host),
                    configuration);
    const InvocationResult result = host.Run(command.method, command.arguments);
    output.Write(result.resultTable, command.format, command.method);
    if (!result.errorMessage.empty()) std::fprintf(stderr, "%s\n", TerminalText(result.errorMessage).c_str());
    return ExitCodeOf(result.resultCode);
}

int ServeWith(const ServeCommand& command, const WriteFunction& write) {
    ShareHeap();
    const AgentConfiguration configuration = Configure(command.host);
    const Host host(LogSettingsOf(command.host, configuration), DatabaseFolderOf(command.host),
                    configuration);
    try {
        return Serve(host, command.settings, write);
    } catch (const std::runtime_error& error) {
        const LogSettings& log = command.host.log;  // without one, what is thrown is enough
        if (!log.file.empty() || log.systemLog != SystemLog::None)
            ServiceLocator::Get<ICLogger>()->Error("%s", LogText::OneLine(error.what()).c_str());
        throw;
    }
}

int Execute(const ServeCommand& command, Output& output) {
    std::atomic<bool> isBroken = false;
    const int code = ServeWith(command, [&](std::string_view text) {
        try {
            output.Write(text);
            return true;
        } catch (const std::system_error& error) {
            if (!isBroken.exchange(true))
                ServiceLocator::Get<ICLogger>()->Error("Standard output cannot be written: %s",
                                                       LogText::OneLine(error.what()).c_str());
            return false;
        }
    });
    return isBroken ? kAgentFailed : code;
}

int RunService(ServeCommand command) {
    if (command.settings.address.empty()) command.settings.address = kServiceAddress;
    const auto body = [&command] {
        try {
            return ServeWith(command, [](std::string_view) { return false; });
        } catch (const std::exception&) {  // logged, if there is a log
            return kAgentFailed;
        }
    };
    return RunAsService(body, [] {
        if (auto* const monitor = ServiceLocator::Get<IShutdownMonitor>()) monitor->RequestShutdown();
    });
}

int Execute(const ServiceCommand& command, Output& output) {
    switch (command.action) {
        case ServiceCommand::Action::Install:
            InstallService(command.options);
            output.Write("The service QuillonAgent is installed\n");
            return 0;
        case ServiceCommand::Action::Remove:
            RemoveService();
            output.Write("The service QuillonAgent is removed\n");
            return 0;
        case ServiceCommand::Action::Run:
            break;
    }
    return RunService(command.serve);
}

int Execute(const MethodsCommand& command, Output& output) {
    const Host host({}, Host::DefaultDatabaseFolder(), Configure(command.host));
    const auto names = host.MethodNames();
    const bool isKnown = std::any_of(names.begin(), names.end(), [&command](const std::string& name) {
        return name.starts_with(command.prefix);
    });
    if (!isKnown) {
        std::fprintf(stderr, "No method begins with '%s'%s\n", ShownText(command.prefix).c_str(),
                     Suggestion(command.prefix, names).c_str());
        return InvocationResult::kBadParameter;
    }
    output.Write(DescribeMethods(host.GetModules(), command.prefix, command.format, output.Width()));
    return 0;
}

int Execute(const CompletionCommand& command, Output& output) {
    const Host host({});
    std::string lines;
    for (const std::string& word : Complete(command.words, host.GetModules())) lines += word + '\n';
    output.Write(lines);
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
    const std::vector<std::string> arguments = GetArguments(argc, argv);
    TryLibraryIfAsked(arguments);
    SecureStandardStreams();
    Output output;
    const CommandLine commandLine = ParseCommandLine(arguments);
    return std::visit([&output](const auto& command) { return Execute(command, output); }, commandLine);
}

/// The text needs memory, which may be what failed.
void TellWhy(const std::exception& error) {
    try {
        std::fprintf(stderr, "quillon-agent: %s\n", TerminalText(error.what()).c_str());
    } catch (const std::bad_alloc&) {
        std::fputs("quillon-agent: There is no memory\n", stderr);
    }
}

}  // namespace

}  // namespace quillon::agent

int main(int argc, char** argv) {
    try {
        return quillon::agent::Main(argc, argv);
    } catch (const std::exception& error) {
        quillon::agent::TellWhy(error);
        return quillon::agent::kAgentFailed;
    }
}
