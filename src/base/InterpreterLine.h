#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillon::base {

/// Returns whether a program's name or path is that of the command interpreter of Windows: "cmd" or "cmd.exe"
/// in any case and any directory.
bool IsInterpreter(std::string_view program);

/// Returns what the interpreter would run for the command line of `cmd` with the switch /c, as cmd itself
/// reads the line; nothing for another program, or without that switch. Other switches before it (/d, /q,
/// /s, /v:on ...) are skipped. A text that begins with a quote loses that one and its last one, unless it
/// has exactly two, no switch /s came before, no special character is between them, and they enclose,
/// blanks included, what `isProgram` says is a program.
std::optional<std::string> InterpreterScript(std::string_view commandLine,
                                             const std::function<bool(std::string_view)>& isProgram);

}  // namespace quillon::base
