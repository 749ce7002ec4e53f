#include "cli/CommandLine.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "cli/AgentApp.h"
#include "cli/Completion.h"
#include "cli/ManualPage.h"
#include "common/ShownText.h"
#include "common/Suggestion.h"

namespace quillon::agent {

namespace {

constexpr int kBadCommandLine = 2;
constexpr const char* kMoreInformation = "Run with --help for more information.\n";

UsageMessage Refusal(const std::string& fault) { return {kBadCommandLine, fault + '\n' + kMoreInformation}; }

UsageMessage ToMessage(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream text;
    const int code = app.exit(error, text, text);
    return code == 0 ? UsageMessage{0, text.str()} : Refusal(TerminalText(error.what()));
}

bool IsOption(const std::string& argument) {
    return argument.size() > 1 && argument[0] == '-' && argument != "--" &&
           (argument[1] < '0' || argument[1] > '9');
}

/// The library names such words only as "not expected", if at all.
std::optional<UsageMessage> FindUnknownWord(const CLI::App& app, const std::vector<std::string>& arguments) {
    const auto refuse = [](const char* kind, const std::string& word, const std::vector<std::string>& names) {
        return Refusal("Unknown " + std::string(kind) + " '" + ShownText(word) + '\'' +
                       Suggestion(word, names));
    };
    const CLI::App* scope = &app;
    for (const std::string& argument : arguments) {
        if (argument == "--") break;
        if (IsOption(argument)) {
            const std::string name = argument.substr(0, argument.find('='));
            const auto names = OptionNames(*scope);
            if (std::find(names.begin(), names.end(), name) == names.end())
                return refuse("option", name, names);
        } else if (scope == &app) {
            scope = FindSubCommand(app, argument);
            if (scope == nullptr) return refuse("sub-command", argument, SubCommandNames(app));
        }
    }
    return std::nullopt;
}

/// "completion words WORD ..."
bool AsksForWords(const std::vector<std::string>& arguments) {
    return arguments.size() >= 2 && arguments[0] == "completion" && arguments[1] == "words";
}

CommandLine Parsed(AgentApp& agent, const std::vector<std::string>& arguments) {
    const std::string name = agent.app.get_subcommands().front()->get_name();
    if (name == "run") return std::move(agent.run);
    if (name == "methods") return std::move(agent.methods);
    if (name == "serve") return std::move(agent.serve);
    if (name == "completion") return UsageMessage{0, CompletionScript(agent.shell)};
    if (name == "manual") return UsageMessage{0, ManualPage(agent.app)};
    auto& options = agent.service.options;
    options.assign(arguments.begin() + 1, arguments.end());
    const auto action = std::find(options.begin(), options.end(), "install");
    if (action != options.end()) options.erase(action);
    return std::move(agent.service);
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
    if (AsksForWords(arguments)) return CompletionCommand{{arguments.begin() + 2, arguments.end()}};
    AgentApp agent;
    if (auto message = FindUnknownWord(agent.app, arguments)) return std::move(*message);
    try {
        agent.app.parse(
            std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // as CLI11 takes them
        return Parsed(agent, arguments);
    } catch (const CLI::ParseError& error) {
        return ToMessage(agent.app, error);
    }
}

}  // namespace quillon::agent
