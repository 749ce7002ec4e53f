#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillon::base {

/// An IPv4 or IPv6 address; its bytes in network order.
struct IpAddress {
    static constexpr std::size_t kIpv4Size = 4, kIpv6Size = 16;

    std::array<std::uint8_t, kIpv6Size> bytes{};
    std::size_t size = 0;  ///< kIpv4Size or kIpv6Size

    bool operator==(const IpAddress&) const = default;
    /// Orders every IPv4 address before every IPv6 address.
    bool operator<(const IpAddress& other) const {
        return size != other.size ? size < other.size : bytes < other.bytes;
    }
};

/// Copies an address of kIpv4Size or kIpv6Size bytes in network order.
IpAddress MakeIpAddress(const void* bytes, std::size_t size);

/// Reads an address strictly: IPv4 as four decimal numbers without leading zeros, IPv6 as in RFC 4291,
/// section 2.2, whose last 32 bits may be written as IPv4. Returns nothing for a port, a scope, brackets or
/// white space.
std::optional<IpAddress> ReadIpAddress(std::string_view text);

/// Returns the canonical text of an address (RFC 5952, section 4; IPv4 in decimal).
std::string IpAddressText(const IpAddress& address);

/// Returns the IPv4 address inside ::ffff:0:0/96 (RFC 4291, section 2.5.5.2); every other address unchanged.
IpAddress Unmapped(const IpAddress& address);

}  // namespace quillon::base
