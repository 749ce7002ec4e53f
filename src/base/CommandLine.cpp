#include "base/CommandLine.h"

#include <algorithm>

namespace quillon::base {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

/// Keeps the rest of a command line that is not read yet.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text.substr(0, text.find('\0'))) {}

    bool SkipBlanks() {
        while (!m_rest.empty() && IsBlank(m_rest.front())) m_rest.remove_prefix(1);
        return !m_rest.empty();
    }

    std::string TakeProgram() {
        const bool quoted = m_rest.starts_with('"');
        if (quoted) m_rest.remove_prefix(1);
        const std::string_view program = m_rest.substr(0, m_rest.find_first_of(quoted ? "\"" : " \t"));
        m_rest.remove_prefix(program.size());
        if (quoted && !m_rest.empty()) m_rest.remove_prefix(1);
        return std::string(program);
    }

    std::string TakeArgument() {
        std::string argument;
        unsigned openQuotes = 0;
        while (!m_rest.empty() && (openQuotes > 0 || !IsBlank(m_rest.front()))) {
            const std::size_t backslashes = TakeRun('\\');
            if (m_rest.starts_with('"')) {
                TakeQuotes(backslashes, openQuotes, argument);
            } else if (backslashes > 0) {
                argument.append(backslashes, '\\');
            } else {
                argument.push_back(m_rest.front());
                m_rest.remove_prefix(1);
            }
        }
        return argument;
    }

private:
    std::size_t TakeRun(char c) {
        std::size_t length = 0;
        while (length < m_rest.size() && m_rest[length] == c) ++length;
        m_rest.remove_prefix(length);
        return length;
    }

    /// A run of quotes after backslashes. An odd backslash takes the first quote as
    /// it is. Of the others, counting the one that is open, every third is literal
    /// and closes, and two close again what they opened.
    void TakeQuotes(std::size_t backslashes, unsigned& openQuotes, std::string& argument) {
        argument.append(backslashes / 2, '\\');
        std::size_t quotes = TakeRun('"');
        if (backslashes % 2 != 0) {
            argument.push_back('"');
            --quotes;
        }
        for (; quotes > 0; --quotes) {
            if (++openQuotes < 3) continue;
            argument.push_back('"');
            openQuotes = 0;
        }
        if (openQuotes == 2) openQuotes = 0;
    }

    std::string_view m_rest;
};

bool NeedsQuotes(std::string_view text) {
    return text.empty() || std::any_of(text.begin(), text.end(), [](char c) {
               return (c >= 0 && c <= ' ') || c == '"' || c == ',' || c == ';' || c == '=';
           });
}

/// No backslash in a program's name has a meaning.
std::string QuoteProgram(std::string_view program) {
    if (program.find('"') != std::string_view::npos) return QuoteArgument(program);
    return NeedsQuotes(program) ? '"' + std::string(program) + '"' : std::string(program);
}

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view commandLine) {
    Scanner scanner(commandLine);
    std::vector<std::string> arguments;
    if (commandLine.empty()) return arguments;
    arguments.push_back(scanner.TakeProgram());
    while (scanner.SkipBlanks()) arguments.push_back(scanner.TakeArgument());
    return arguments;
}

std::string QuoteArgument(std::string_view argument) {
    if (!NeedsQuotes(argument)) return std::string(argument);
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        // Backslashes are doubled where a quote follows them, each quote gets one more.
        if (c == '"') quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted.push_back(c);
    }
    return quoted.append(backslashes, '\\').append("\"");
}

std::string JoinCommandLine(const std::vector<std::string_view>& arguments) {
    std::string line;
    for (const std::string_view argument : arguments) {
        if (line.empty()) {
            line = QuoteProgram(argument);
        } else {
            line.append(" ").append(QuoteArgument(argument));
        }
    }
    return line;
}

}  // namespace quillon::base
