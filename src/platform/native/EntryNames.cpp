#include "platform/native/EntryNames.h"

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace quillon::platform {

std::optional<std::vector<std::string>> EntryNames(const std::string& folder) {
    const auto close = [](::DIR* open) { ::closedir(open); };
    const std::unique_ptr<::DIR, decltype(close)> open(::opendir(folder.c_str()));
    if (open == nullptr) return std::nullopt;
    std::vector<std::string> names;
    errno = 0;
    while (const ::dirent* const entry = ::readdir(open.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
        errno = 0;
    }
    return errno == 0 ? std::optional(std::move(names)) : std::nullopt;
}

}  // namespace quillon::platform
