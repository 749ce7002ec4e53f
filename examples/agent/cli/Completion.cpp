#include "cli/Completion.h"

#include <algorithm>

#include "cli/AgentApp.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

using Words = std::vector<std::string>;

const char* const kBash =
    R"(# Has bash complete command lines of the agent: . <(quillon-agent completion bash)
_quillon_agent() {
    local IFS=$'\n'
    COMPREPLY=($("${COMP_WORDS[0]}" completion words "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null))
    [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace 2>/dev/null
}
complete -o default -F _quillon_agent quillon-agent
)";

const char* const kPowerShell =
    R"(# Has PowerShell complete command lines of the agent:
# quillon-agent completion powershell | Out-String | Invoke-Expression
Register-ArgumentCompleter -Native -CommandName @('quillon-agent', 'quillon-agent.exe') -ScriptBlock {
    param($word, $line, $position)
    $before = $line.CommandElements | Select-Object -Skip 1 | Where-Object { $_.Extent.StartOffset -lt $position }
    $words = @($before | ForEach-Object { $_.ToString() })
    if ($word -eq '') { $words += ' ' }
    & ($line.GetCommandName()) completion words $words | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
    }
}
)";

bool IsOption(const std::string& word) { return word.starts_with("-"); }

/// What an option, or the place of an argument, takes, when it is one of a few words.
Words ChoicesOf(const CLI::Option& option) {
    Words choices;
    if (option.get_type_name().find('|') != std::string::npos)
        StringUtils::SplitByChar(option.get_type_name(), '|', choices);
    return choices;
}

/// The words that are neither options nor their values. Every option of the agent but help takes one.
Words Positional(const Words& words) {
    Words positional;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!IsOption(words[i])) positional.push_back(words[i]);
        const bool takesNext = IsOption(words[i]) && words[i].find('=') == std::string::npos &&
                               words[i] != "--help" && words[i] != "-h";
        if (takesNext) ++i;
    }
    return positional;
}

Words MethodNames(const ModuleList& modules) {
    Words names;
    for (const auto& module : modules) {
        for (const Method& method : module->GetMethods()) {
            if (!method.metadata->IsUndocumented()) names.emplace_back(method.metadata->MethodName());
        }
    }
    return names;
}

Words ParametersOf(const std::string& name, const ModuleList& modules) {
    Words names;
    for (const auto& module : modules) {
        for (const Method& method : module->GetMethods()) {
            if (name != method.metadata->MethodName()) continue;
            method.metadata->VisitParameter([&names](const char* parameter, const auto&) {
                names.push_back(parameter + std::string("="));
            });
        }
    }
    return names;
}

/// bash parts "--option=value" and "name=value" at the '=', which is a word then. The value of an option is
/// completed as if the '=' were not there.
Words WithoutEquals(Words words) {
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] != "=" || !IsOption(words[i - 1])) continue;
        if (i + 1 == words.size()) words.emplace_back();
        words.erase(words.begin() + static_cast<std::ptrdiff_t>(i));
    }
    return words;
}

/// Whether the last word is the value of a parameter, of which nothing is known.
bool IsParameterValue(const Words& words) {
    return words.back() == "=" || (words.size() > 1 && words[words.size() - 2] == "=");
}

/// The choices of an option whose name is in front of them in the word itself, as PowerShell hands it over.
Words ChoicesBehindName(const CLI::App& subCommand, const std::string& word) {
    const std::string name = word.substr(0, word.find('='));
    const CLI::Option* const option = subCommand.get_option_no_throw(name);
    Words choices = option == nullptr ? Words() : ChoicesOf(*option);
    for (std::string& choice : choices) choice.insert(0, name + '=');
    return choices;
}

/// What could follow the words, of which the first is the sub-command.
Words Candidates(const CLI::App& subCommand, const Words& before, const std::string& word,
                 const ModuleList& modules) {
    if (IsOption(word) && word.find('=') != std::string::npos) return ChoicesBehindName(subCommand, word);
    if (IsOption(word)) return OptionNames(subCommand);
    const CLI::Option* const option =
        IsOption(before.back()) ? subCommand.get_option_no_throw(before.back()) : nullptr;
    if (option != nullptr && option->get_expected_min() > 0) return ChoicesOf(*option);
    const Words positional = Positional(before);
    const std::string name = subCommand.get_name();
    if (positional.size() > 1) return name == "run" ? ParametersOf(positional[1], modules) : Words();
    if (name == "run" || name == "methods") return MethodNames(modules);
    for (const CLI::Option* const each : subCommand.get_options(nullptr)) {
        if (each->get_positional()) return ChoicesOf(*each);
    }
    return {};
}

}  // namespace

std::string CompletionScript(const std::string& shell) { return shell == "bash" ? kBash : kPowerShell; }

Words Complete(const Words& given, const ModuleList& modules) {
    AgentApp agent;
    const Words words = WithoutEquals(given);
    if (!words.empty() && IsParameterValue(words)) return {};
    Words before(words.begin(), words.empty() ? words.begin() : words.end() - 1);
    const std::string word = words.empty() || words.back() == " " ? "" : words.back();
    Words candidates;
    if (before.empty()) {
        candidates = IsOption(word) ? OptionNames(agent.app) : SubCommandNames(agent.app);
    } else if (const CLI::App* const subCommand = FindSubCommand(agent.app, before.front())) {
        candidates = Candidates(*subCommand, before, word, modules);
    }
    std::erase_if(candidates, [&word](const std::string& candidate) { return !candidate.starts_with(word); });
    return candidates;
}

}  // namespace quillon::agent
