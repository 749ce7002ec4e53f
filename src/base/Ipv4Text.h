#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quillon::base {

/// How the numbers of an IPv4 address are written.
enum class Ipv4Rule {
    Strict,       ///< four decimal numbers without leading zeros
    System,       ///< one to four in a base of their own, as Windows reads them (see TextToAddress())
    ThreeDigits,  ///< four of one to three digits, octal behind a zero
    Scanf         ///< four as "%u" takes them: blanks and a sign in front, and the low 32 bits count
};

/// The numbers that stand in an address, which need not be one.
struct Ipv4Numbers {
    static constexpr std::size_t kMost = 4;

    std::array<std::uint32_t, kMost> values{};
    std::size_t count = 0;

    /// Returns the address in host byte order. The last number fills all bits that are left. Nothing when a
    /// number is too large for its place.
    [[nodiscard]] std::optional<std::uint32_t> Address() const;
};

/// Takes the numbers of an address, with points between them, off the front of `text`. Nothing when the rule
/// does not match.
std::optional<Ipv4Numbers> TakeIpv4Numbers(std::string_view& text, Ipv4Rule rule);

/// Takes an address off the front of `text`, and returns it in host byte order.
std::optional<std::uint32_t> TakeIpv4(std::string_view& text, Ipv4Rule rule);

/// Reads a text that is an address as a whole.
std::optional<std::uint32_t> ReadIpv4(std::string_view text, Ipv4Rule rule);

/// Reads what may follow an address: nothing, a port of 0, or ":PORT" in any of the
/// three bases. Nothing for anything else, and for a port that is 0 or past 16 bits.
std::optional<std::uint16_t> ReadPort(std::string_view text);

}  // namespace quillon::base
