#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <charconv>
#include <cstring>

#include "base/IpAddress.h"
#include "base/Ipv4Text.h"
#include "platform/NetworkApi.h"
#include "platform/posix/SocketStart.h"

namespace quillon::platform {

namespace {

bool ReadIpv4(std::string_view text, void* address) {
    const auto host = base::TakeIpv4<base::Ipv4OfSystem>(text);
    const auto port = host ? base::ReadPort(text) : std::nullopt;
    if (!port) return false;
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(*host);
    result.sin_port = htons(*port);
    std::memcpy(address, &result, sizeof result);
    return true;
}

/// "ADDRESS" or "ADDRESS%SCOPE".
bool ReadHost(std::string_view text, sockaddr_in6& result) {
    const std::size_t percent = text.find('%');
    const auto host = base::ReadIpAddress(text.substr(0, percent));
    if (!host || host->size != base::IpAddress::kIpv6Size) return false;
    std::memcpy(&result.sin6_addr, host->bytes.data(), host->size);
    if (percent == std::string_view::npos) return true;
    const std::string_view scope = text.substr(percent + 1);
    const char* const end = scope.data() + scope.size();
    const auto read = std::from_chars(scope.data(), end, result.sin6_scope_id);
    return read.ec == std::errc() && read.ptr == end;
}

bool ReadIpv6(std::string_view text, void* address) {
    std::string_view rest;
    if (text.starts_with('[')) {
        const std::size_t bracket = text.find(']');
        if (bracket == std::string_view::npos) return false;
        rest = text.substr(bracket + 1);
        text = text.substr(1, bracket - 1);
    }
    sockaddr_in6 result{};
    const auto port = ReadHost(text, result) ? base::ReadPort(rest) : std::nullopt;
    if (!port) return false;
    result.sin6_family = AF_INET6;
    result.sin6_port = htons(*port);
    std::memcpy(address, &result, sizeof result);
    return true;
}

std::string PortText(std::uint16_t port) {
    return port == 0 ? std::string() : ':' + std::to_string(ntohs(port));
}

std::string Ipv4Text(const void* address) {
    sockaddr_in source;
    std::memcpy(&source, address, sizeof source);
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &source.sin_addr, text.data(), text.size());
    return text.data() + PortText(source.sin_port);
}

std::string Ipv6Text(const void* address) {
    sockaddr_in6 source;
    std::memcpy(&source, address, sizeof source);
    std::array<char, INET6_ADDRSTRLEN> host{};
    ::inet_ntop(AF_INET6, &source.sin6_addr, host.data(), host.size());
    std::string text = host.data();
    if (source.sin6_scope_id != 0) text += '%' + std::to_string(source.sin6_scope_id);
    return source.sin6_port == 0 ? text : '[' + text + ']' + PortText(source.sin6_port);
}

}  // namespace

bool TextToAddress(int family, const std::string& text, void* address) {
    if (!AreSocketsStarted()) return false;
    if (family == kIpv4) return ReadIpv4(text, address);
    return family == kIpv6 && ReadIpv6(text, address);
}

std::string AddressToText(const void* address, std::size_t length) {
    if (!AreSocketsStarted()) return {};
    sa_family_t family = AF_UNSPEC;
    if (length >= sizeof family) std::memcpy(&family, address, sizeof family);
    if (family == AF_INET && length >= kIpv4AddressSize) return Ipv4Text(address);
    return family == AF_INET6 && length >= kIpv6AddressSize ? Ipv6Text(address) : std::string();
}

}  // namespace quillon::platform
