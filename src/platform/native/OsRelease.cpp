#include "platform/native/OsRelease.h"

#include <fstream>

namespace quillon::platform {

std::optional<std::string> OsReleaseValue(std::string_view name) {
    std::ifstream file("/etc/os-release");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(name) || line.substr(name.size(), 1) != "=") continue;
        line.erase(0, name.size() + 1);
        if (line.size() >= 2 && line.front() == '"' && line.back() == '"')
            return line.substr(1, line.size() - 2);
        return line;
    }
    return std::nullopt;
}

}  // namespace quillon::platform
