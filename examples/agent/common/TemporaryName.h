#pragma once

#include <string>

namespace quillon::agent {

/// Returns a name for a file that is still being written, another one with each call.
std::string MakeTemporaryName();
/// Returns whether a name has the form of those that the agent and the library make.
bool IsTemporaryName(const std::string& name);

}  // namespace quillon::agent
