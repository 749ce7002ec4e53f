#include "platform/NetworkApi.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>

namespace quillon::platform {

std::optional<std::string> HostName() {
    std::array<char, 255> name{};
    if (::gethostname(name.data(), name.size()) != 0) return std::nullopt;
    name.back() = '\0';  // a name that is cut need not end
    return name.data();
}

std::optional<std::string> FullyQualifiedName() {
    const auto host = HostName();
    if (!host) return std::nullopt;
    if (host->find('.') != std::string::npos) return host;
    addrinfo hints{};
    hints.ai_flags = AI_CANONNAME;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host->c_str(), nullptr, &hints, &found) != 0) return std::nullopt;
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
    if (found->ai_canonname == nullptr) return std::nullopt;
    return found->ai_canonname;
}

std::optional<std::string> LoopbackName() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::array<char, 1025> host{};
    std::array<char, 32> service{};
    if (::getnameinfo(reinterpret_cast<const sockaddr*>(&address), sizeof address, host.data(), host.size(),
                      service.data(), service.size(), NI_NAMEREQD) != 0) {
        return std::nullopt;
    }
    return host.data();
}

std::optional<std::string> FlatDomainName() { return std::nullopt; }

}  // namespace quillon::platform
