#include "system/Service.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace quillon::agent {

namespace {

/// A name that begins with '@' is one of the abstract name space.
void Notify(std::string_view state) {
    const char* const name = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    if (name == nullptr || (name[0] != '/' && name[0] != '@')) return;
    const std::size_t length = std::strlen(name);
    if (length >= sizeof address.sun_path) return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name, length);
    if (name[0] == '@') address.sun_path[0] = '\0';
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0) return;
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
    static_cast<void>(::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL,
                               reinterpret_cast<const sockaddr*>(&address), size));
    ::close(socket);
}

[[noreturn]] void ThrowNoManager() {
    throw std::runtime_error("This system has no Windows services; a unit of systemd runs 'serve'");
}

}  // namespace

void TellReady() { Notify("READY=1"); }
void TellStopping() { Notify("STOPPING=1"); }

void InstallService(const std::vector<std::string>&) { ThrowNoManager(); }
void RemoveService() { ThrowNoManager(); }
int RunAsService(const std::function<int()>&, const std::function<void()>&) { ThrowNoManager(); }

}  // namespace quillon::agent
