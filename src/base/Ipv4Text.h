#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Characters.h"

namespace quillon::base {

inline constexpr std::size_t kMostIpv4Numbers = 4;

// The rules of how an address is written. Each takes one number off the front of a text.

/// Four decimal numbers without leading zeros.
struct Ipv4Strict {
    static constexpr std::size_t kFewest = kMostIpv4Numbers;
    static bool Take(const char*& at, const char* end, std::uint32_t& number);
};

/// One to four numbers, each in a base of its own, as Windows reads them (see TextToAddress()).
struct Ipv4OfSystem {
    static constexpr std::size_t kFewest = 1;
    static bool Take(const char*& at, const char* end, std::uint32_t& number);
};

/// Four numbers as "%u" takes them: blanks and a sign may stand in front, and the low 32 bits count.
struct Ipv4OfScanf {
    static constexpr std::size_t kFewest = kMostIpv4Numbers;
    static bool Take(const char*& at, const char* end, std::uint32_t& number);
};

/// Four numbers of one to three digits, octal behind a zero. Lists of ranges are long: it is inline.
struct Ipv4ThreeDigits {
    static constexpr std::size_t kFewest = kMostIpv4Numbers;
    static bool Take(const char*& at, const char* end, std::uint32_t& number) {
        constexpr std::ptrdiff_t kMostDigits = 3;
        const char* const begin = at;
        const char* const limit = end - at > kMostDigits ? at + kMostDigits : end;
        number = 0;
        for (; at != limit && IsDigit(*at); ++at)
            number = number * 10 + static_cast<std::uint32_t>(*at - '0');
        if (at - begin > 1 && *begin == '0') number = Octal(begin, at);
        return at != begin;
    }

private:
    /// Too large for an address when a digit is none of the octal ones.
    static std::uint32_t Octal(const char* begin, const char* end) {
        std::uint32_t number = 0;
        for (; begin != end && *begin <= '7'; ++begin)
            number = number * 8 + static_cast<std::uint32_t>(*begin - '0');
        return begin == end ? number : UINT32_MAX;
    }
};

/// Takes the numbers of an address, with points between them, off the front of a text, and hands each of them
/// to `use`. Returns how many there are; 0 when the rule does not match, whatever has been handed over.
template <class Rule, class Use>
std::size_t TakeIpv4Numbers(const char*& at, const char* end, Use use) {
    std::size_t count = 0;
    for (;;) {
        std::uint32_t number = 0;
        if (!Rule::Take(at, end, number)) return 0;
        use(number);
        if (++count == kMostIpv4Numbers || at == end || *at != '.') break;
        ++at;
    }
    return count >= Rule::kFewest ? count : 0;
}

/// Takes an address off the front of `text`, and returns it in host byte order. The last number fills all
/// bits that are left. Nothing when a number is too large for its place.
template <class Rule>
std::optional<std::uint32_t> TakeIpv4(std::string_view& text) {
    constexpr int kBits = 8;
    const char* at = text.data();
    std::uint64_t address = 0, last = 0;
    bool areOctets = true;
    const std::size_t count = TakeIpv4Numbers<Rule>(at, at + text.size(), [&](std::uint32_t number) {
        areOctets &= last >> kBits == 0;
        address = address << kBits | last;
        last = number;
    });
    text.remove_prefix(static_cast<std::size_t>(at - text.data()));
    const int bits = kBits * static_cast<int>(kMostIpv4Numbers + 1 - count);  // of the last number
    if (count == 0 || !areOctets || last >> bits != 0) return std::nullopt;
    return static_cast<std::uint32_t>(address << bits | last);
}

/// Reads a text that is an address as a whole.
template <class Rule>
std::optional<std::uint32_t> ReadIpv4(std::string_view text) {
    const auto address = TakeIpv4<Rule>(text);
    return text.empty() ? address : std::nullopt;
}

/// Reads what may follow an address: nothing, a port of 0, or ":PORT" in any of the
/// three bases. Nothing for anything else, and for a port that is 0 or past 16 bits.
std::optional<std::uint16_t> ReadPort(std::string_view text);

}  // namespace quillon::base
