#pragma once

#include <string>

namespace quillon::agent {

/// Makes the file of a log if there is none. Returns why the logger could not write to it; empty when it can.
std::string FaultOfLogFile(const std::string& libraryPath);

}  // namespace quillon::agent
