#pragma once

#include <string>

namespace quillon::agent {

/// Makes an empty file that the agent's account alone may read and write, from its first moment on.
/// The path is the library's. An existing file, and a failure, change nothing; the next use of the
/// path tells of the failure.
void MakePrivateFile(const std::string& libraryPath);

}  // namespace quillon::agent
