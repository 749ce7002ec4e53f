#include "base/Ipv4Text.h"

#include <charconv>
#include <cstdint>
#include <system_error>

#include "base/NumberText.h"

namespace quillon::base {

namespace {

constexpr int kOctal = 8, kDecimal = 10, kHexadecimal = 16;

bool TakeNumber(const char*& at, const char* end, std::uint32_t& number, int base) {
    const auto [behind, error] = std::from_chars(at, end, number, base);
    at = behind;
    return error == std::errc();
}

}  // namespace

bool Ipv4Strict::Take(const char*& at, const char* end, std::uint32_t& number) {
    const bool hasZeros = end - at > 1 && at[0] == '0' && IsDigit(at[1]);
    return !hasZeros && TakeNumber(at, end, number, kDecimal);
}

bool Ipv4OfSystem::Take(const char*& at, const char* end, std::uint32_t& number) {
    const std::string_view text(at, end);
    if (!text.starts_with("0x") && !text.starts_with("0X"))
        return TakeNumber(at, end, number, text.starts_with('0') ? kOctal : kDecimal);
    at += 2;
    return TakeNumber(at, end, number, kHexadecimal);
}

bool Ipv4OfScanf::Take(const char*& at, const char* end, std::uint32_t& number) {
    std::string_view text(at, end);
    const auto taken = TakeUnsigned(text);
    at = end - text.size();
    number = static_cast<std::uint32_t>(taken.value_or(0));
    return taken.has_value();
}

std::optional<std::uint16_t> ReadPort(std::string_view text) {
    constexpr std::uint32_t kLargestPort = 65'535;
    if (text.empty()) return std::uint16_t{0};
    if (!text.starts_with(':')) return std::nullopt;
    const char* at = text.data() + 1;
    const char* const end = text.data() + text.size();
    std::uint32_t port = 0;
    if (!Ipv4OfSystem::Take(at, end, port) || at != end || port == 0 || port > kLargestPort)
        return std::nullopt;
    return static_cast<std::uint16_t>(port);
}

}  // namespace quillon::base
