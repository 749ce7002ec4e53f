#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quillon::platform {

/// The network as the system knows it. Texts are UTF-8. Nothing, or false, on failure.

/// Windows Sockets 2.2; each start is to be taken back by one stop. Names of hosts, look-ups and addresses as
/// text fail before the first start (10093, WSANOTINITIALISED), also outside Windows, where the start does
/// nothing else.
bool StartSockets();
void StopSockets();

std::optional<std::string> HostName();
/// Holds a name, or tells whether the same question may have an answer later.
struct NameAnswer {
    std::optional<std::string> name;
    bool mayComeLater = false;  ///< no name server answered, or the system was short of something
};
/// May ask a name server outside Windows.
NameAnswer FullyQualifiedName();
/// The name of 127.0.0.1; may ask a name server.
NameAnswer LoopbackName();
/// Returns the flat name of the primary domain or the workgroup. Only Windows machines have one.
std::optional<std::string> FlatDomainName();

/// The families of addresses by the same numbers on every system. A socket address
/// itself is the system's, and so is the number in it (10 for IPv6 on Linux).
constexpr int kIpv4 = 2;
constexpr int kIpv6 = 23;
constexpr std::size_t kIpv4AddressSize = 16;
constexpr std::size_t kIpv6AddressSize = 28;

/// Reads a text into a socket address of the family's size, which a failure leaves
/// alone. As Windows does, on every system: IPv4 as one to four numbers, decimal, octal
/// ("010" is 8) or hexadecimal, the last one filling the rest ("10.1" is 10.0.0.1), and
/// ":PORT"; IPv6 with "%SCOPE", or in brackets, and there with ":PORT". Outside
/// Windows an IPv4 part of an IPv6 address has no leading zeros.
bool TextToAddress(int family, const std::string& text, void* address);
/// Returns the address with its port and scope unless they are 0; empty on failure.
std::string AddressToText(const void* address, std::size_t length);

}  // namespace quillon::platform
