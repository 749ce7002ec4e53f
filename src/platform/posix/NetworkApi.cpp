#include "platform/NetworkApi.h"
#include "platform/ResolverApi.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>

#include "platform/posix/SocketStart.h"

namespace quillon::platform {

namespace {

std::optional<std::string> SystemHostName() {
    std::array<char, 255> name{};
    if (::gethostname(name.data(), name.size()) != 0) return std::nullopt;
    name.back() = '\0';  // a name that is cut need not end
    return name.data();
}

/// Returns whether a look-up failed for what the next one may not lack: a name server, memory or a
/// descriptor.
bool MayComeLater(int code) { return code == EAI_AGAIN || code == EAI_MEMORY || code == EAI_SYSTEM; }

const char* TextOrNull(const std::optional<std::string>& text) { return text ? text->c_str() : nullptr; }

void SetHints(const std::array<int, 5>& fields, addrinfo& hints) {
    hints.ai_flags = fields[0];
    hints.ai_family = fields[1];
    hints.ai_socktype = fields[2];
    hints.ai_protocol = fields[3];
    hints.ai_addrlen = static_cast<socklen_t>(fields[4]);
}

}  // namespace

std::optional<std::string> HostName() { return AreSocketsStarted() ? SystemHostName() : std::nullopt; }

NameAnswer FullyQualifiedName() {
    const auto host = SystemHostName();
    if (!host) return {};
    if (host->find('.') != std::string::npos) return {.name = host};
    addrinfo hints{};
    hints.ai_flags = AI_CANONNAME;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int code = ::getaddrinfo(host->c_str(), nullptr, &hints, &found);
    if (code != 0) return {.name = std::nullopt, .mayComeLater = MayComeLater(code)};
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
    if (found->ai_canonname == nullptr) return {};
    return {.name = found->ai_canonname};
}

NameAnswer LoopbackName() {
    if (!AreSocketsStarted()) return {};
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::array<char, 1025> host{};
    std::array<char, 32> service{};
    const int code = ::getnameinfo(reinterpret_cast<const sockaddr*>(&address), sizeof address, host.data(),
                                   host.size(), service.data(), service.size(), NI_NAMEREQD);
    if (code != 0) return {.name = std::nullopt, .mayComeLater = MayComeLater(code)};
    return {.name = host.data()};
}

int AskSystem(const AddressQuery& query, addrinfo*& list) noexcept {
    if (!AreSocketsStarted()) return EAI_FAIL;
    addrinfo hints{};
    if (query.hints) SetHints(*query.hints, hints);
    return ::getaddrinfo(TextOrNull(query.node), TextOrNull(query.service), query.hints ? &hints : nullptr,
                         &list);
}

std::string ResolverErrorText(int code) { return ::gai_strerror(code); }

std::optional<std::string> FlatDomainName() { return std::nullopt; }

}  // namespace quillon::platform
