#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <string>

namespace quillon::test {

/// Makes a local socket, binds it to a path or connects it to the one there, and returns it; a name that
/// begins with '@' is abstract.
inline int LocalSocket(const std::string& name, int type, decltype(&::connect) join) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    if (name.starts_with('@')) address.sun_path[0] = '\0';
    const int socket = ::socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(join(socket, reinterpret_cast<const sockaddr*>(&address), size), 0) << name;
    return socket;
}

}  // namespace quillon::test
