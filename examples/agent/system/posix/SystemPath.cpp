#include "system/SystemPath.h"

#include <algorithm>

namespace quillon::agent {

std::string ToSystemPath(const std::string& libraryPath) {
    std::string path = libraryPath.starts_with("C:\\") ? libraryPath.substr(2) : libraryPath;
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

}  // namespace quillon::agent
