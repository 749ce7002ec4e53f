#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/IpAddress.h"

struct sockaddr;

namespace quillon::platform {

/// The operational state of a network interface, with the numbers of RFC 2863 (ifOperStatus).
enum class AdapterState {
    Up = 1,
    Down = 2,
    Testing = 3,
    Unknown = 4,
    Dormant = 5,
    NotPresent = 6,
    LowerLayerDown = 7,
};

struct AdapterAddress {
    base::IpAddress address;
    int prefix = 0;  ///< bits of the network
};

/// A network interface. Texts are UTF-8.
struct Adapter {
    std::string name;
    std::string description;  ///< the name again where the system has none
    std::uint32_t index = 0;
    std::vector<std::uint8_t> hardwareAddress;  ///< empty when it has none, as the loopback
    AdapterState state = AdapterState::Unknown;
    std::vector<AdapterAddress> addresses;
};

/// Returns the address in a socket address; one without bytes for null and for a family that is none of the
/// Internet.
base::IpAddress IpAddressOf(const sockaddr* address);

/// Lists the network interfaces with their unicast addresses; nothing on failure, see the last error.
std::optional<std::vector<Adapter>> ListAdapters();

}  // namespace quillon::platform
