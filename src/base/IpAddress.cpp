#include "base/IpAddress.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>

#include "base/Ipv4Text.h"

namespace quillon::base {

namespace {

constexpr std::size_t kGroupSize = 2;

bool ReadIpv4Bytes(std::string_view text, std::uint8_t* bytes) {
    const auto address = ReadIpv4<Ipv4Strict>(text);
    for (std::size_t i = 0; address && i < IpAddress::kIpv4Size; ++i)
        bytes[i] = static_cast<std::uint8_t>(*address >> (24 - 8 * i));
    return address.has_value();
}

/// Takes one to four hexadecimal digits off the front.
bool TakeGroup(std::string_view& text, std::uint8_t* bytes) {
    constexpr std::size_t kMostDigits = 4;
    constexpr int kHexadecimal = 16;
    std::uint16_t group = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), group, kHexadecimal);
    const auto length = static_cast<std::size_t>(end - text.data());
    if (error != std::errc() || length > kMostDigits) return false;
    text.remove_prefix(length);
    bytes[0] = static_cast<std::uint8_t>(group >> 8);
    bytes[1] = static_cast<std::uint8_t>(group & 0xFF);
    return true;
}

bool ReadIpv6(std::string_view text, IpAddress& address) {
    std::size_t size = 0;
    std::optional<std::size_t> gap;  // where "::" stands
    if (text.starts_with("::")) {
        gap = 0;
        text.remove_prefix(2);
    }
    while (!text.empty()) {
        const std::string_view group = text.substr(0, text.find(':'));
        if (group.size() == text.size() && group.find('.') != std::string_view::npos) {
            if (size + IpAddress::kIpv4Size > IpAddress::kIpv6Size ||
                !ReadIpv4Bytes(text, &address.bytes[size]))
                return false;
            size += IpAddress::kIpv4Size;
            break;
        }
        if (size == IpAddress::kIpv6Size || !TakeGroup(text, &address.bytes[size])) return false;
        size += kGroupSize;
        if (text.empty()) break;
        if (text.starts_with("::")) {
            if (gap) return false;
            gap = size;
            text.remove_prefix(2);
        } else if (text.size() > 1 && text.front() == ':') {
            text.remove_prefix(1);
        } else {
            return false;  // something else behind a group, or a colon at the end
        }
    }
    if (!gap) return size == IpAddress::kIpv6Size;
    if (size == IpAddress::kIpv6Size) return false;  // "::" stands for one group at least
    const auto begin = address.bytes.begin();
    std::rotate(begin + static_cast<std::ptrdiff_t>(*gap), begin + static_cast<std::ptrdiff_t>(size),
                address.bytes.end());
    return true;
}

constexpr std::size_t kGroups = IpAddress::kIpv6Size / 2;

/// The first longest run of at least two groups of zeros, which the text leaves out.
struct ZeroRun {
    std::size_t begin = kGroups, size = 1;
};

ZeroRun LongestZeroRun(const std::array<unsigned int, kGroups>& groups) {
    ZeroRun longest;
    for (std::size_t begin = 0; begin < kGroups;) {
        std::size_t end = begin;
        while (end < kGroups && groups[end] == 0) ++end;
        if (end - begin > longest.size) longest = {begin, end - begin};
        begin = std::max(end, begin + 1);
    }
    return longest;
}

std::string Ipv6Text(const IpAddress& address) {
    std::array<unsigned int, kGroups> groups{};
    for (std::size_t i = 0; i < kGroups; ++i)
        groups[i] = address.bytes[2 * i] * 0x100U + address.bytes[2 * i + 1];
    const ZeroRun run = LongestZeroRun(groups);
    std::string text;
    for (std::size_t i = 0; i < kGroups; ++i) {
        if (i == run.begin) {
            text += "::";
            i += run.size - 1;
            continue;
        }
        if (!text.empty() && text.back() != ':') text += ':';
        std::array<char, 8> digits{};
        text.append(digits.data(), std::to_chars(digits.data(), digits.end(), groups[i], 16).ptr);
    }
    return text;
}

}  // namespace

std::string IpAddressText(const IpAddress& address) {
    if (address.size == IpAddress::kIpv6Size) return Ipv6Text(address);
    std::string text;
    for (std::size_t i = 0; i < IpAddress::kIpv4Size; ++i)
        text += (i == 0 ? "" : ".") + std::to_string(address.bytes[i]);
    return text;
}

IpAddress MakeIpAddress(const void* bytes, std::size_t size) {
    IpAddress address;
    address.size = size;
    std::memcpy(address.bytes.data(), bytes, size);
    return address;
}

std::optional<IpAddress> ReadIpAddress(std::string_view text) {
    IpAddress address;
    if (text.find(':') == std::string_view::npos) {
        address.size = IpAddress::kIpv4Size;
        return ReadIpv4Bytes(text, address.bytes.data()) ? std::optional(address) : std::nullopt;
    }
    address.size = IpAddress::kIpv6Size;
    return ReadIpv6(text, address) ? std::optional(address) : std::nullopt;
}

IpAddress Unmapped(const IpAddress& address) {
    constexpr std::size_t kPrefixSize = IpAddress::kIpv6Size - IpAddress::kIpv4Size;
    constexpr std::array<std::uint8_t, kPrefixSize> kPrefix{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    if (address.size != IpAddress::kIpv6Size ||
        !std::equal(kPrefix.begin(), kPrefix.end(), address.bytes.begin()))
        return address;
    IpAddress inner;
    inner.size = IpAddress::kIpv4Size;
    std::copy_n(address.bytes.begin() + kPrefixSize, IpAddress::kIpv4Size, inner.bytes.begin());
    return inner;
}

}  // namespace quillon::base
