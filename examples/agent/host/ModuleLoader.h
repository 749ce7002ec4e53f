#pragma once

#include <string>

#include "modules/Modules.h"

namespace quillon::agent {

/// Loads the modules in shared libraries that stand in a directory, in the order of their file names, and
/// appends them to `modules`. Both the directory and each file must be such that only the agent's
/// account, the system and its administrators can change them. What is no regular file or cannot be loaded,
/// whose module was built for another version of the interface, throws, or has a method that is incomplete or
/// there already, is skipped with a Warn entry on the registered logger that names it and the reason.
void LoadModules(const std::string& directory, ModuleList& modules);

}  // namespace quillon::agent
