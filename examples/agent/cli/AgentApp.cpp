#include "cli/AgentApp.h"

#include <utility>

#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

const char* const kFooter =
    "The exit code of 'run' is the result code of the invocation: 0 for success. The section \"Exit codes\"\n"
    "of docs/agent.md lists all codes.";

template <class T>
using Choices = std::vector<std::pair<std::string, T>>;

const Choices<ListFormat> kListFormats = {
    {"text", ListFormat::Text}, {"json", ListFormat::Json}, {"markdown", ListFormat::Markdown}};
const Choices<Format> kTableFormats = {{"text", Format::Text},
                                       {"json", Format::Json},
                                       {"jsonl", Format::JsonLines},
                                       {"csv", Format::Csv},
                                       {"line", Format::Line},
                                       {"markdown", Format::Markdown},
                                       {"openmetrics", Format::OpenMetrics}};
const Choices<ServiceCommand::Action> kActions = {{"install", ServiceCommand::Action::Install},
                                                  {"remove", ServiceCommand::Action::Remove},
                                                  {"run", ServiceCommand::Action::Run}};
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

void AddRun(CLI::App& app, RunCommand& command) {
    CLI::App* const run =
        app.add_subcommand("run", "Runs a method and prints the table that it answers with");
    run->add_option("method", command.method, "Module.Method")->required();
    run->add_option("arguments", command.arguments, "Parameters of the method")
        ->check(CheckArgument)
        ->type_name("name=value");
    AddChoice(*run, "--format", command.format, kTableFormats, "Form of the table (default text)");
    AddHostOptions(*run, command.host);
}

void AddMethods(CLI::App& app, MethodsCommand& command) {
    CLI::App* const methods =
        app.add_subcommand("methods", "Lists every method with its parameters and columns");
    AddChoice(*methods, "--format", command.format, kListFormats, "Form of the list (default text)");
    methods->add_option("name", command.prefix, "Only this method, or those whose names begin so")
        ->type_name("NAME");
    AddModuleOptions(*methods, command.host);
}

void AddServeOptions(CLI::App& serve, ServeCommand& command) {
    serve
        .add_option("--listen", command.settings.address,
                    "Unix socket (Windows: name of a pipe) for clients of this account; without it standard "
                    "input and output")
        ->check(CheckFileName)
        ->type_name("ADDRESS");
    serve.add_option("--parallel", command.settings.parallel, "How many calls run at once (default 8)")
        ->check(CLI::Range(1, 256))
        ->type_name("NUMBER");
    AddHostOptions(serve, command.host);
}

void AddService(CLI::App& app, ServiceCommand& command) {
    CLI::App* const service =
        app.add_subcommand("service", "Installs, removes or is the Windows service that serves");
    const auto choose = [&command](const std::string& given) {
        for (const auto& [name, action] : kActions) {
            if (name == given) command.action = action;
        }
    };
    service->add_option_function<std::string>("action", choose, "What to do")
        ->required()
        ->check(CLI::IsMember(kActions).description(""))
        ->type_name("install|remove|run");
    AddServeOptions(*service, command.serve);
}

/// Its words are taken before the command line is parsed, as they may be anything.
void AddCompletion(CLI::App& app, std::string& shell) {
    app.add_subcommand("completion", "Prints a script that has a shell complete command lines")
        ->add_option("shell", shell, "The shell")
        ->required()
        ->check(CLI::IsMember({"bash", "powershell"}).description(""))
        ->type_name("bash|powershell");
}

}  // namespace

AgentApp::AgentApp() : app("Runs methods of the agent's modules, without an agent.", "quillon-agent") {
    app.footer(kFooter);
    app.require_subcommand(1);
    app.allow_windows_style_options(false);
    app.set_version_flag("--version", "quillon-agent " QUILLON_AGENT_LIBRARY_VERSION, "Prints the version");
    AddRun(app, run);
    AddMethods(app, methods);
    AddServeOptions(
        *app.add_subcommand("serve", "Answers requests, a JSON object a line, until it is asked to end"),
        serve);
    AddService(app, service);
    AddCompletion(app, shell);
    app.add_subcommand("manual", "Prints the manual page, in the words of man(7)");
}

std::vector<std::string> SubCommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const subCommand : app.get_subcommands(nullptr))
        names.push_back(subCommand->get_name());
    return names;
}

const CLI::App* FindSubCommand(const CLI::App& app, const std::string& name) {
    for (const CLI::App* const subCommand : app.get_subcommands(nullptr)) {
        if (subCommand->get_name() == name) return subCommand;
    }
    return nullptr;
}

std::vector<std::string> OptionNames(const CLI::App& subCommand) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : subCommand.get_options(nullptr)) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    }
    return names;
}

}  // namespace quillon::agent
