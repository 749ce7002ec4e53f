#include "system/SystemPath.h"

namespace quillon::agent {

std::string ToSystemPath(const std::string& libraryPath) { return libraryPath; }

}  // namespace quillon::agent
