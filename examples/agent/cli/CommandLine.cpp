#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr int kBadCommandLine = 2;

const char* const kExitCodes =
    "Exit codes of 'run' are the invocation's result codes: 0 success; 2 a bad call, also an\n"
    "unknown method or a malformed command line; 3 a failed, timed-out or aborted command;\n"
    "6 a content list that is of no use, 7 content that is not as listed.\n"
    "1 means that the agent itself failed.";

template <class T>
using Choices = std::vector<std::pair<std::string, T>>;

const Choices<ListFormat> kListFormats = {
    {"text", ListFormat::Text}, {"json", ListFormat::Json}, {"markdown", ListFormat::Markdown}};
const Choices<Format> kTableFormats = {{"text", Format::Text}, {"json", Format::Json}, {"csv", Format::Csv}};
const Choices<ICLogger::Level> kLevels = {
    {"trace", ICLogger::Level::Trace}, {"debug", ICLogger::Level::Debug}, {"info", ICLogger::Level::Info},
    {"warn", ICLogger::Level::Warn},   {"error", ICLogger::Level::Error}, {"fatal", ICLogger::Level::Fatal}};
const Choices<LogFormat> kLogFormats = {{"text", LogFormat::Text}, {"json", LogFormat::Json}};
const Choices<SystemLog> kSystemLogs = {{"journal", SystemLog::Journal}, {"eventlog", SystemLog::EventLog}};

std::string CheckArgument(const std::string& argument) {
    if (argument.find('=') != std::string::npos) return {};
    return "'" + argument + "' is not of the form name=value";
}

std::string CheckFileName(const std::string& name) { return name.empty() ? "a file name is needed" : ""; }

std::string CheckDirectory(const std::string& name) { return name.empty() ? "a directory is needed" : ""; }

/// Adds an option whose value is one of the choices' names, in any case.
template <class T, class Target>
void AddChoice(CLI::App& app, const std::string& option, Target& target, const Choices<T>& choices,
               const std::string& text) {
    const auto choose = [&target, &choices](const std::string& given) {
        for (const auto& [name, value] : choices) {
            if (StringUtils::CompareCaseInsensitive(name, given)) target = value;
        }
    };
    std::string names;
    for (const auto& choice : choices) names += (names.empty() ? "" : "|") + choice.first;
    app.add_option_function<std::string>(option, choose, text)
        ->check(CLI::IsMember(choices, CLI::ignore_case).description(""))
        ->type_name(names);
}

void AddModuleOptions(CLI::App& app, HostOptions& options) {
    app.add_option("--config", options.configuration, "Settings of the agent, a JSON file")
        ->check(CheckFileName)
        ->type_name("FILE");
    app.add_option("--modules", options.modules, "Load modules from this directory, not the configuration's")
        ->check(CheckDirectory)
        ->type_name("FOLDER");
}

void AddHostOptions(CLI::App& app, HostOptions& options) {
    app.add_option("--log", options.log.file, "Log to this file, and to standard error")
        ->check(CheckFileName)
        ->type_name("FILE");
    AddChoice(app, "--log-format", options.log.format, kLogFormats, "Form of its lines (default text)");
    AddChoice(app, "--log-to", options.log.systemLog, kSystemLogs, "Log to this log of the system as well");
    AddChoice(app, "--level", options.log.level, kLevels,
              "Lowest level to log (default: the configuration's; info with --log, else warn)");
    AddModuleOptions(app, options);
    app.add_option("--data", options.data, "Keep the databases below this directory, not the agent's own")
        ->type_name("FOLDER");
}

CLI::App* AddRun(CLI::App& app, RunCommand& command) {
    CLI::App* const run =
        app.add_subcommand("run", "Runs a method and prints the table that it answers with");
    run->add_option("method", command.method, "Module.Method")->required();
    run->add_option("arguments", command.arguments, "Parameters of the method")
        ->check(CheckArgument)
        ->type_name("name=value");
    AddChoice(*run, "--format", command.format, kTableFormats, "Form of the table (default text)");
    AddHostOptions(*run, command.host);
    return run;
}

CLI::App* AddMethods(CLI::App& app, MethodsCommand& command) {
    CLI::App* const methods =
        app.add_subcommand("methods", "Lists every method with its parameters and columns");
    AddChoice(*methods, "--format", command.format, kListFormats, "Form of the list (default text)");
    AddModuleOptions(*methods, command.host);
    return methods;
}

CLI::App* AddServe(CLI::App& app, ServeCommand& command) {
    CLI::App* const serve =
        app.add_subcommand("serve", "Answers requests, a JSON object a line, until it is asked to end");
    serve
        ->add_option("--listen", command.settings.address,
                     "Unix socket (Windows: name of a pipe) for clients of this account; without it standard "
                     "input and output")
        ->check(CheckFileName)
        ->type_name("ADDRESS");
    serve->add_option("--parallel", command.settings.parallel, "How many calls run at once (default 8)")
        ->check(CLI::Range(1, 256))
        ->type_name("NUMBER");
    AddHostOptions(*serve, command.host);
    return serve;
}

UsageMessage ToMessage(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream text;
    const int code = app.exit(error, text, text);
    return {code == 0 ? 0 : kBadCommandLine, text.str()};
}

}  // namespace

CommandLine ParseCommandLine(std::vector<std::string> arguments) {
    CLI::App app("Runs methods of the agent's modules, without an agent.", "quillon-agent");
    app.footer(kExitCodes);
    app.require_subcommand(1);
    app.allow_windows_style_options(false);
    RunCommand runCommand;
    MethodsCommand methodsCommand;
    ServeCommand serveCommand;
    const CLI::App* const run = AddRun(app, runCommand);
    const CLI::App* const methods = AddMethods(app, methodsCommand);
    AddServe(app, serveCommand);
    try {
        std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return ToMessage(app, error);
    }
    if (run->parsed()) return runCommand;
    if (methods->parsed()) return methodsCommand;
    return serveCommand;
}

}  // namespace quillon::agent
