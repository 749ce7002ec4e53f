#pragma once

#include <string>
#include <vector>

#include "modules/Modules.h"

namespace quillon::agent {

/// Returns a script for "bash" or "powershell" that has the shell ask the agent what could stand for a word.
std::string CompletionScript(const std::string& shell);

/// Returns what could stand for the last of the words that follow the program's name: sub-commands, options,
/// their values, methods and the parameters of a method, each "name=".
std::vector<std::string> Complete(const std::vector<std::string>& words, const ModuleList& modules);

}  // namespace quillon::agent
