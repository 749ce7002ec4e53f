#pragma once

#include <optional>
#include <string>

namespace quillon::platform {

/// The process's environment. Text is in the ANSI code page on Windows, and bytes
/// elsewhere. Not to be changed while another thread uses it.

/// Returns the value; nothing on failure, see LastError(): base::kVariableNotFound when the variable is
/// not set.
std::optional<std::string> ReadVariable(const char* name);
/// A null `value` removes the variable.
bool WriteVariable(const char* name, const char* value);

}  // namespace quillon::platform
