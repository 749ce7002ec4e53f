#pragma once

#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Builds a command line from arguments so that a program that reads it by the
/// Windows argument rules (CommandLineToArgvW) gets exactly what was put in.
/// Texts are UTF-8. std::invalid_argument is thrown for what no quoting can carry:
/// a zero byte anywhere, a quote in a program's name, and, when the program is a
/// batch file (.bat, .cmd), characters that its interpreter would act upon.
class QUILLON_API CommandLineBuilder {
public:
    explicit CommandLineBuilder(const std::string& program);

    CommandLineBuilder& Add(const std::string& argument);
    /// For CmdProperties::command.
    const std::string& Get() const;

private:
    std::string m_commandLine;
    bool m_isBatchFile;
};

}  // namespace quillon
