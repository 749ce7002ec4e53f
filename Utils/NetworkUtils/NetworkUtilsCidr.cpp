#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

#include "base/HexDigits.h"
#include "base/IpAddress.h"
#include "base/Ipv4Text.h"
#include "quillon/NetworkUtils.h"

namespace quillon {

namespace {

std::string Dotted(const std::array<std::uint32_t, base::Ipv4Numbers::kMost>& octets) {
    std::string text;
    for (const std::uint32_t octet : octets) {
        if (!text.empty()) text += '.';
        text += std::to_string(octet);
    }
    return text;
}

std::optional<std::size_t> ReadPrefixLength(std::string_view text, std::size_t most) {
    std::size_t length = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, length);
    return error == std::errc() && at == end && length <= most ? std::optional(length) : std::nullopt;
}

bool HasSamePrefix(const unsigned char* a, const unsigned char* b, std::size_t bits) {
    for (; bits >= 8; bits -= 8) {
        if (*a++ != *b++) return false;
    }
    return bits == 0 || (*a ^ *b) >> (8 - bits) == 0;
}

}  // namespace

bool NetworkUtils::IpInCidr(const std::string& address, const std::string& cidr) {
    const std::size_t slash = cidr.find('/');
    if (slash == std::string::npos) return false;
    const auto wanted = base::ReadIpAddress(address);
    const auto network = base::ReadIpAddress(std::string_view(cidr).substr(0, slash));
    if (!wanted || !network || wanted->size != network->size) return false;
    const auto length = ReadPrefixLength(std::string_view(cidr).substr(slash + 1), network->size * 8);
    return length && HasSamePrefix(wanted->bytes.data(), network->bytes.data(), *length);
}

std::string NetworkUtils::FormatIpV4AddressAsString(unsigned long address) {
    return Dotted(
        {static_cast<std::uint32_t>(address & 0xFF), static_cast<std::uint32_t>(address >> 8 & 0xFF),
         static_cast<std::uint32_t>(address >> 16 & 0xFF), static_cast<std::uint32_t>(address >> 24 & 0xFF)});
}

std::string NetworkUtils::FormatMacAddressAsString(unsigned long length, unsigned char* bytes) {
    std::string text;
    for (unsigned long i = 0; i < length; ++i) {
        if (i > 0) text += '-';
        text += base::kLowerDigits[bytes[i] >> 4];
        text += base::kLowerDigits[bytes[i] & 0xF];
    }
    return text;
}

std::string NetworkUtils::GetNetworkCidrAddressFromAddressAndMask(const std::string& address,
                                                                  const std::string& mask) {
    std::string_view addressText = address, maskText = mask;  // the rest of each does not count
    auto network = base::TakeIpv4Numbers(addressText, base::Ipv4Rule::Scanf);
    const auto maskNumbers = base::TakeIpv4Numbers(maskText, base::Ipv4Rule::Scanf);
    if (!network || !maskNumbers) return {};
    std::uint32_t maskValue = 0;
    for (std::size_t i = 0; i < network->values.size(); ++i) {
        network->values[i] &= maskNumbers->values[i];
        maskValue = maskValue << 8 | maskNumbers->values[i];
    }
    return Dotted(network->values) + '/' + std::to_string(32 - std::countr_zero(maskValue));
}

}  // namespace quillon
