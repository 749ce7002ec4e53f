#pragma once

#include <string>

namespace quillon::agent {

/// A path of the library as a foreign library needs it, in UTF-8; implemented once in
/// posix/ and once in win32/.
std::string ToSystemPath(const std::string& libraryPath);

}  // namespace quillon::agent
