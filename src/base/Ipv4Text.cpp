#include "base/Ipv4Text.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace quillon::base {

namespace {

/// A number in the base that its beginning tells: "0x" or "0".
std::optional<std::uint32_t> TakeNumber(std::string_view& text) {
    int base = text.starts_with('0') ? 8 : 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

}  // namespace

std::optional<std::uint32_t> TakeIpv4(std::string_view& text) {
    constexpr std::uint32_t kLargestOctet = 255;
    std::uint32_t address = 0;
    for (int bits = 32;;) {  // that are still to be filled
        const auto number = TakeNumber(text);
        if (!number) return std::nullopt;
        const bool isLast = bits == 8 || !text.starts_with('.');
        if (isLast)
            return std::uint64_t{*number} >> bits == 0 ? std::optional(address | *number) : std::nullopt;
        if (*number > kLargestOctet) return std::nullopt;
        bits -= 8;
        address |= *number << bits;
        text.remove_prefix(1);
    }
}

std::optional<std::uint16_t> ReadPort(std::string_view text) {
    constexpr std::uint32_t kLargestPort = 65'535;
    if (text.empty()) return std::uint16_t{0};
    if (!text.starts_with(':')) return std::nullopt;
    text.remove_prefix(1);
    const auto port = TakeNumber(text);
    if (!port || !text.empty() || *port == 0 || *port > kLargestPort) return std::nullopt;
    return static_cast<std::uint16_t>(*port);
}

}  // namespace quillon::base
