#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillon {

/// The fixed patterns of addresses, matched in time linear in the text.

/// ^[-0-9a-z.]+[a-z][-0-9a-z.]+$
bool IsLowerCaseName(std::string_view text);

/// The first group of ^\[?((([0-9]{1,3}\.){3}([0-9]{1,3}))|([0-9a-fA-F:]*?:[0-9a-fA-F:]+))\]?$
std::optional<std::string_view> AddressInBrackets(std::string_view text);

/// (?:[0-9]{1,3}\.){3}[0-9]{1,3}\b[-]\b(?:[0-9]{1,3}\.){3}[0-9]{1,3}
struct Ipv4Range {
    std::uint32_t low = 1, high = 0;

    bool Holds(std::uint32_t address) const { return low <= address && address <= high; }
};
/// The ends in their order, a number behind a zero being octal as the system reads it; holding nothing when
/// one of them is no address.
std::optional<Ipv4Range> ReadIpv4Range(std::string_view text);

}  // namespace quillon
