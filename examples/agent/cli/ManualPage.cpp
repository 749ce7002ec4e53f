#include "cli/ManualPage.h"

#include <CLI/CLI.hpp>

namespace quillon::agent {

namespace {

/// A text that means nothing to the formatter.
std::string Plain(const std::string& text) {
    std::string plain;
    for (const char c : text) {
        if (c == '\\') {
            plain += "\\e";
        } else if (c == '-') {
            plain += "\\-";
        } else {
            const bool beginsLine = plain.empty() || plain.back() == '\n';
            if (beginsLine && (c == '.' || c == '\'')) plain += "\\&";
            plain += c;
        }
    }
    return plain;
}

std::string Bold(const std::string& text) { return "\\fB" + Plain(text) + "\\fR"; }
std::string Italic(const std::string& text) { return text.empty() ? "" : " \\fI" + Plain(text) + "\\fR"; }

std::string Item(const CLI::Option& option) {
    const bool isPositional = option.get_positional();
    const bool takesValue = option.get_expected_min() > 0;
    const std::string name = isPositional ? Bold(option.get_name(true)) : Bold(option.get_name());
    return ".TP\n" + name + (takesValue ? Italic(option.get_type_name()) : "") + '\n' +
           Plain(option.get_description()) + '\n';
}

std::string Options(const CLI::App& app) {
    std::string text;
    for (const bool positional : {true, false}) {
        for (const CLI::Option* const option : app.get_options(nullptr)) {
            if (option->get_positional() == positional) text += Item(*option);
        }
    }
    return text;
}

/// The positional arguments, in brackets unless they are needed.
std::string Synopsis(const CLI::App& subCommand) {
    std::string text = ".B quillon\\-agent " + Plain(subCommand.get_name()) + '\n';
    for (const CLI::Option* const option : subCommand.get_options(nullptr)) {
        if (!option->get_positional()) continue;
        const std::string name = "\\fI" + Plain(option->get_name(true)) + "\\fR";
        text += option->get_required() ? name + '\n' : '[' + name + "]\n";
    }
    return text + "[\\fIoptions\\fR]\n.br\n";
}

}  // namespace

std::string ManualPage(const CLI::App& app) {
    std::string synopsis, commands;
    for (const CLI::App* const subCommand : app.get_subcommands(nullptr)) {
        synopsis += Synopsis(*subCommand);
        commands += ".SS " + Plain(subCommand->get_name()) + '\n' + Plain(subCommand->get_description()) +
                    ".\n" + Options(*subCommand);
    }
    return ".TH QUILLON\\-AGENT 1 \"\" \"quillon " QUILLON_AGENT_LIBRARY_VERSION
           "\"\n"
           ".SH NAME\nquillon\\-agent \\- runs methods of the agent\\(aqs modules\n"
           ".SH SYNOPSIS\n" +
           synopsis + ".SH DESCRIPTION\n" + Plain(app.get_description()) + '\n' + Options(app) +
           ".SH COMMANDS\n" + commands + ".SH EXIT STATUS\n" + Plain(app.get_footer()) + '\n';
}

}  // namespace quillon::agent
