#include "quillon/CommandLineBuilder.h"

#include <stdexcept>

#include "base/CommandLine.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

/// Names are compared as the system does: it ignores blanks and dots at their ends.
bool IsBatchFile(const std::string& program) {
    const std::string name = program.substr(0, program.find_last_not_of(" .") + 1);
    return StringUtils::EndsWith(name, ".bat", false) || StringUtils::EndsWith(name, ".cmd", false);
}

void CheckForZero(const std::string& text) {
    if (text.find('\0') == std::string::npos) return;
    throw std::invalid_argument("A command line cannot hold a zero byte");
}

/// A batch file's interpreter reads the line again by rules of its own, in which a
/// quote cannot be escaped and these act even within quotes or once unquoted.
void CheckForInterpreter(const std::string& text) {
    if (text.find_first_of("\"%!^&|<>\r\n") == std::string::npos) return;
    throw std::invalid_argument("A batch file would act upon characters of: " + text);
}

}  // namespace

CommandLineBuilder::CommandLineBuilder(const std::string& program) : m_isBatchFile(IsBatchFile(program)) {
    CheckForZero(program);
    if (program.find('"') != std::string::npos) {
        throw std::invalid_argument("A program's name cannot hold a quote: " + program);
    }
    if (m_isBatchFile) CheckForInterpreter(program);
    m_commandLine = base::JoinCommandLine({program});
}

CommandLineBuilder& CommandLineBuilder::Add(const std::string& argument) {
    CheckForZero(argument);
    if (m_isBatchFile) CheckForInterpreter(argument);
    m_commandLine.append(" ").append(base::QuoteArgument(argument));
    return *this;
}

const std::string& CommandLineBuilder::Get() const { return m_commandLine; }

}  // namespace quillon
