#include "base/Ipv4Text.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "base/Characters.h"
#include "base/NumberText.h"

namespace quillon::base {

namespace {

constexpr std::uint32_t kNoOctet = 256;

using Number = std::optional<std::uint32_t>;

Number TakeNumber(std::string_view& text, int base) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// A number in the base that its beginning tells: "0x" or "0".
Number TakeInOwnBase(std::string_view& text) {
    constexpr int kOctal = 8, kDecimal = 10, kHexadecimal = 16;
    if (!text.starts_with("0x") && !text.starts_with("0X"))
        return TakeNumber(text, text.starts_with('0') ? kOctal : kDecimal);
    text.remove_prefix(2);
    return TakeNumber(text, kHexadecimal);
}

Number TakeWithoutZeros(std::string_view& text) {
    constexpr int kDecimal = 10;
    const bool hasZeros = text.starts_with('0') && text.size() > 1 && IsDigit(text[1]);
    return hasZeros ? std::nullopt : TakeNumber(text, kDecimal);
}

Number TakeThreeDigits(std::string_view& text) {
    constexpr std::size_t kMostDigits = 3;
    std::uint32_t decimal = 0, octal = 0, largest = 0;
    std::size_t count = 0;
    for (; count < text.size() && count < kMostDigits && IsDigit(text[count]); ++count) {
        const auto digit = static_cast<std::uint32_t>(text[count] - '0');
        decimal = decimal * 10 + digit;
        octal = octal * 8 + digit;
        largest = std::max(largest, digit);
    }
    if (count == 0) return std::nullopt;
    const bool isOctal = count > 1 && text.front() == '0';
    text.remove_prefix(count);
    return !isOctal ? decimal : largest < 8 ? octal : kNoOctet;
}

Number TakeAsScanf(std::string_view& text) {
    const auto number = TakeUnsigned(text);
    return number ? Number(static_cast<std::uint32_t>(*number)) : std::nullopt;
}

/// `take` takes one number off the front.
template <class Take>
std::optional<Ipv4Numbers> TakeNumbers(std::string_view& text, std::size_t fewest, Take take) {
    Ipv4Numbers numbers;
    for (;;) {
        const Number number = take(text);
        if (!number) return std::nullopt;
        numbers.values[numbers.count++] = *number;
        if (numbers.count == Ipv4Numbers::kMost || !text.starts_with('.')) break;
        text.remove_prefix(1);
    }
    return numbers.count < fewest ? std::nullopt : std::optional(numbers);
}

}  // namespace

std::optional<std::uint32_t> Ipv4Numbers::Address() const {
    std::uint32_t address = 0;
    int bits = 32;  // that are still to be filled
    for (std::size_t i = 0; i + 1 < count; ++i) {
        if (values[i] >= kNoOctet) return std::nullopt;
        bits -= 8;
        address |= values[i] << bits;
    }
    const std::uint32_t last = values[count - 1];
    return std::uint64_t{last} >> bits == 0 ? std::optional(address | last) : std::nullopt;
}

std::optional<Ipv4Numbers> TakeIpv4Numbers(std::string_view& text, Ipv4Rule rule) {
    switch (rule) {
        case Ipv4Rule::Strict:
            return TakeNumbers(text, Ipv4Numbers::kMost, TakeWithoutZeros);
        case Ipv4Rule::System:
            return TakeNumbers(text, 1, TakeInOwnBase);
        case Ipv4Rule::ThreeDigits:
            return TakeNumbers(text, Ipv4Numbers::kMost, TakeThreeDigits);
        case Ipv4Rule::Scanf:
            return TakeNumbers(text, Ipv4Numbers::kMost, TakeAsScanf);
    }
    return std::nullopt;
}

std::optional<std::uint32_t> TakeIpv4(std::string_view& text, Ipv4Rule rule) {
    const auto numbers = TakeIpv4Numbers(text, rule);
    return numbers ? numbers->Address() : std::nullopt;
}

std::optional<std::uint32_t> ReadIpv4(std::string_view text, Ipv4Rule rule) {
    const auto address = TakeIpv4(text, rule);
    return text.empty() ? address : std::nullopt;
}

std::optional<std::uint16_t> ReadPort(std::string_view text) {
    constexpr std::uint32_t kLargestPort = 65'535;
    if (text.empty()) return std::uint16_t{0};
    if (!text.starts_with(':')) return std::nullopt;
    text.remove_prefix(1);
    const auto port = TakeInOwnBase(text);
    if (!port || !text.empty() || *port == 0 || *port > kLargestPort) return std::nullopt;
    return static_cast<std::uint16_t>(*port);
}

}  // namespace quillon::base
