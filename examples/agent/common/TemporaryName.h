#pragma once

#include <string>

namespace quillon::agent {

/// A name for a file in the making, new with every call.
std::string MakeTemporaryName();
/// Returns whether a name has the form of those that the agent and the library make.
bool IsTemporaryName(const std::string& name);

}  // namespace quillon::agent
