#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillon::base {

/// Takes an IPv4 address, in host byte order, off the front of `text` as Windows reads
/// it (see TextToAddress()). Nothing when there is none.
std::optional<std::uint32_t> TakeIpv4(std::string_view& text);

/// Reads what may follow an address: nothing, a port of 0, or ":PORT" in any of the
/// three bases. Nothing for anything else, and for a port that is 0 or past 16 bits.
std::optional<std::uint16_t> ReadPort(std::string_view text);

}  // namespace quillon::base
