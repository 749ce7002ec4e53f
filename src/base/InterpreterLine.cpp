#include "base/InterpreterLine.h"

#include <algorithm>

#include "base/Characters.h"

namespace quillon::base {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

void SkipBlanks(std::string_view& text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
}

/// The program ends as in SplitCommandLine, but an unquoted one also at a switch: "cmd/c".
std::string_view TakeProgram(std::string_view& line) {
    const bool isQuoted = line.starts_with('"');
    if (isQuoted) line.remove_prefix(1);
    std::size_t length = std::min(line.find_first_of(isQuoted ? "\"" : " \t"), line.size());
    const std::size_t slash = line.rfind('/', length == 0 ? 0 : length - 1);
    if (!isQuoted && slash != std::string_view::npos && slash < length &&
        IsInterpreter(line.substr(0, slash)))
        length = slash;
    const std::string_view program = line.substr(0, length);
    line.remove_prefix(length);
    if (isQuoted && !line.empty()) line.remove_prefix(1);
    return program;
}

/// Returns the letter of a switch, in lower case, and cuts it off with its quotes and its value; 0 when the
/// text does not begin with one.
char TakeSwitch(std::string_view& text) {
    SkipBlanks(text);
    const bool isQuoted = text.starts_with("\"/");
    if (!isQuoted && !text.starts_with('/')) return 0;
    text.remove_prefix(isQuoted ? 2 : 1);
    if (text.empty()) return 0;
    const char letter = Lower(text.front());
    text.remove_prefix(1);
    const bool isLast = letter == 'c' || letter == 'k' || letter == 'r';
    if (!isLast) text.remove_prefix(std::min(text.find_first_of(" \t/\""), text.size()));
    if (isQuoted && text.starts_with('"')) text.remove_prefix(1);
    return letter;
}

bool KeepsQuotes(std::string_view text, const std::function<bool(std::string_view)>& isProgram) {
    if (std::count(text.begin(), text.end(), '"') != 2) return false;
    const std::string_view quoted = text.substr(1, text.find('"', 1) - 1);
    return quoted.find_first_of("&<>()@^|") == std::string_view::npos &&
           quoted.find_first_of(" \t") != std::string_view::npos && isProgram(quoted);
}

}  // namespace

bool IsInterpreter(std::string_view program) {
    const std::size_t slash = program.find_last_of("/\\:");
    const std::string_view name = slash == std::string_view::npos ? program : program.substr(slash + 1);
    return EqualIgnoringCase<char>(name, "cmd") || EqualIgnoringCase<char>(name, "cmd.exe");
}

std::optional<std::string> InterpreterScript(std::string_view commandLine,
                                             const std::function<bool(std::string_view)>& isProgram) {
    if (!IsInterpreter(TakeProgram(commandLine))) return std::nullopt;
    bool stripsQuotes = false;
    for (char letter = 0; letter != 'c' && letter != 'r';) {
        letter = TakeSwitch(commandLine);
        if (letter == 0 || letter == 'k') return std::nullopt;
        stripsQuotes = stripsQuotes || letter == 's';
    }
    SkipBlanks(commandLine);
    std::string script(commandLine);
    if (!script.starts_with('"') || (!stripsQuotes && KeepsQuotes(script, isProgram))) return script;
    script.erase(0, 1);
    const std::size_t last = script.rfind('"');
    if (last != std::string::npos) script.erase(last, 1);
    return script;
}

}  // namespace quillon::base
