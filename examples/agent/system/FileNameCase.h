#pragma once

#include <string>

namespace quillon::agent {

/// Returns a name in UTF-8 in a form that is the same for all names that a file system without regard to case
/// takes for one, beyond ASCII as well; implemented once in posix/ and once in win32/.
std::string WithoutCase(const std::string& name);

}  // namespace quillon::agent
