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

using Octets = std::array<std::uint32_t, base::kMostIpv4Numbers>;

std::string Dotted(const Octets& octets) {
    std::string text;
    for (const std::uint32_t octet : octets) {
        if (!text.empty()) text += '.';
        text += std::to_string(octet);
    }
    return text;
}

/// Reads four numbers as scanf does; the rest of the text does not count.
std::optional<Octets> ReadOctets(const std::string& text) {
    Octets octets{};
    const char* at = text.data();
    const auto count = base::TakeIpv4Numbers<base::Ipv4OfScanf>(
        at, at + text.size(), [next = octets.begin()](std::uint32_t number) mutable { *next++ = number; });
    return count > 0 ? std::optional(octets) : std::nullopt;
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
    const auto network = ReadOctets(address), maskOctets = ReadOctets(mask);
    if (!network || !maskOctets) return {};
    Octets result{};
    std::uint32_t maskValue = 0;
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = (*network)[i] & (*maskOctets)[i];
        maskValue = maskValue << 8 | (*maskOctets)[i];
    }
    return Dotted(result) + '/' + std::to_string(32 - std::countr_zero(maskValue));
}

}  // namespace quillon
