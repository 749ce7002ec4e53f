#include "quillon/CommandLineBuilder.h"

#include <algorithm>
#include <stdexcept>

#include "base/CommandLine.h"
#include "base/InterpreterLine.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

constexpr const char* kOnlyDots = " .";

/// Returns the last component of a path in either style, without a drive and the separators at its end.
std::string LastComponent(const std::string& program) {
    const std::string path = program.substr(0, program.find_last_not_of("/\\") + 1);
    const std::size_t separator = path.find_last_of("/\\");
    std::string name = separator == std::string::npos ? path : path.substr(separator + 1);
    const bool hasDrive = separator == std::string::npos && name.size() > 1 && name[1] == ':';
    return hasDrive ? name.substr(2) : name;
}

/// A system that removes such a component from the path would run the one before it, whose name nobody
/// has looked at.
void CheckForDots(const std::string& program) {
    const std::string name = LastComponent(program);
    if (name.empty() || name.find_first_not_of(kOnlyDots) != std::string::npos) return;
    throw std::invalid_argument("A program's name cannot be dots: " + program);
}

/// Returns the name that the system runs: it ignores blanks and dots at the ends of names, and a stream of a
/// file is run as the file.
std::string ProgramName(const std::string& program) {
    std::string name = LastComponent(program);
    name.resize(std::min(name.find(':'), name.size()));
    name.resize(name.find_last_not_of(kOnlyDots) + 1);
    return name;
}

bool IsBatchFile(const std::string& name) {
    return StringUtils::EndsWith(name, ".bat", false) || StringUtils::EndsWith(name, ".cmd", false);
}

void CheckForZero(const std::string& text) {
    if (text.find('\0') == std::string::npos) return;
    throw std::invalid_argument("A command line cannot hold a zero byte");
}

/// The interpreter reads the line again by rules of its own, in which a quote cannot be escaped and these
/// act even within quotes or once unquoted.
void CheckForInterpreter(const std::string& text, const char* active) {
    if (text.find_first_of(active) == std::string::npos) return;
    throw std::invalid_argument("A command interpreter would act upon characters of: " + text);
}

constexpr const char* kActiveInBatchFile = "\"%!^&|<>\r\n";
/// Also those of the shell that stands for the interpreter on Linux.
constexpr const char* kActiveInScript = "\"%!^&|<>\r\n$`'";

/// Whether an argument of the interpreter makes what follows a script: "/c", also behind other switches.
bool HasScriptSwitch(const std::string& argument) {
    for (const char* const name : {"/c", "/k", "/r"}) {
        for (std::size_t i = 0; i + 2 <= argument.size(); ++i)
            if (StringUtils::CompareCaseInsensitive(argument.substr(i, 2), std::string(name))) return true;
    }
    return false;
}

}  // namespace

CommandLineBuilder::CommandLineBuilder(const std::string& program)
    : m_reader(IsBatchFile(ProgramName(program))           ? Reader::BatchFile
               : base::IsInterpreter(ProgramName(program)) ? Reader::Interpreter
                                                           : Reader::Program) {
    CheckForZero(program);
    if (program.find('"') != std::string::npos) {
        throw std::invalid_argument("A program's name cannot hold a quote: " + program);
    }
    CheckForDots(program);
    Check(program);
    m_commandLine = base::JoinCommandLine({program});
}

CommandLineBuilder& CommandLineBuilder::Add(const std::string& argument) {
    CheckForZero(argument);
    Check(argument);
    m_commandLine.append(" ").append(base::QuoteArgument(argument));
    if (m_reader == Reader::Interpreter && HasScriptSwitch(argument)) m_reader = Reader::Script;
    return *this;
}

void CommandLineBuilder::Check(const std::string& text) const {
    if (m_reader == Reader::BatchFile) CheckForInterpreter(text, kActiveInBatchFile);
    const bool isScript = m_reader == Reader::Script || (m_reader == Reader::Interpreter &&
                                                         !m_commandLine.empty() && HasScriptSwitch(text));
    if (isScript) CheckForInterpreter(text, kActiveInScript);
}

const std::string& CommandLineBuilder::Get() const { return m_commandLine; }

}  // namespace quillon
