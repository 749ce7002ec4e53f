#include "platform/native/UserName.h"

#include <pwd.h>

#include <cerrno>
#include <new>
#include <vector>

namespace quillon::platform {

std::optional<std::string> UserName(uid_t user) {
    constexpr std::size_t kLargestEntry = std::size_t{1} << 20;
    for (std::vector<char> buffer(1024); buffer.size() <= kLargestEntry; buffer.resize(buffer.size() * 2)) {
        passwd entry{};
        passwd* found = nullptr;
        const int error = ::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
        if (error == ERANGE) continue;
        if (error == ENOMEM) throw std::bad_alloc();  // there may be such a user
        return error == 0 && found != nullptr ? std::optional(std::string(found->pw_name)) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace quillon::platform
