#pragma once

#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Builds a command line from arguments so that a program that reads it by the Windows argument
/// rules (CommandLineToArgvW) gets exactly what was put in, whatever blanks, quotes and
/// backslashes it holds.
///
/// Texts are UTF-8. What no quoting can carry throws std::invalid_argument: a NUL anywhere, a
/// quote in a program's name, a path whose last component is nothing but dots and blanks,
/// and, when the program is a batch file (.bat, .cmd), any of " % ! ^ & | < > and line ends, upon
/// which its interpreter would act. What follows the switch /c of the interpreter itself (cmd)
/// is held to the same, and to $ ` and ', upon which the shell would act that stands for it on
/// Linux; whoever means a script writes it into CmdProperties::command. Nothing is logged. One
/// object is used by one thread at a time.
///
/// @code
/// CommandLineBuilder line("C:\\Program Files\\tool.exe");
/// line.Add("--name").Add("a \"quoted\" word").Add("");
/// std::cout << line.Get() << '\n';  // "C:\Program Files\tool.exe" --name "a \"quoted\" word" ""
/// @endcode
class QUILLON_API CommandLineBuilder {
public:
    /// Begins the line with a program's name or path, quoted where needed; whether it exists is
    /// not checked.
    explicit CommandLineBuilder(const std::string& program);

    /// Adds one argument, quoted where needed; the empty text too becomes an argument. When it
    /// throws, the line stays as it was. Returns this object.
    CommandLineBuilder& Add(const std::string& argument);
    /// Returns the line so far, for CmdProperties::command; the reference is valid until the
    /// next Add().
    const std::string& Get() const;

private:
    /// Who reads the arguments.
    enum class Reader { Program, BatchFile, Interpreter, Script };

    void Check(const std::string& text) const;

    std::string m_commandLine;
    Reader m_reader;
};

}  // namespace quillon
