#include "Utils/internal/NetworkPatterns.h"

#include <algorithm>
#include <cstddef>

#include "base/Characters.h"
#include "base/HexDigits.h"

namespace quillon {

namespace {

using base::IsDigit;

constexpr bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool IsNameCharacter(char c) { return IsLower(c) || IsDigit(c) || c == '-' || c == '.'; }
constexpr bool IsColonOrHex(char c) { return c == ':' || base::HexDigit(c) >= 0; }

constexpr std::uint32_t kNoOctet = 256;

std::uint32_t ReadOctal(const char* begin, const char* end) {
    std::uint32_t value = 0;
    for (; begin != end; ++begin) {
        if (*begin > '7') return kNoOctet;
        value = value * 8 + static_cast<std::uint32_t>(*begin - '0');
    }
    return value;
}

/// Takes one to three digits off the front.
inline bool TakeOctet(const char*& at, const char* end, std::uint32_t& value) {
    constexpr std::ptrdiff_t kMostDigits = 3;
    const char* const begin = at;
    const char* const limit = end - at > kMostDigits ? at + kMostDigits : end;
    value = 0;
    for (; at != limit && IsDigit(*at); ++at) value = value * 10 + static_cast<std::uint32_t>(*at - '0');
    if (at - begin > 1 && *begin == '0') value = ReadOctal(begin, at);
    return at != begin;
}

bool TakeQuad(const char*& at, const char* end, DottedQuad& quad) {
    for (int i = 0; i < 4; ++i) {
        if (i > 0 && (at == end || *at++ != '.')) return false;
        std::uint32_t value = 0;
        if (!TakeOctet(at, end, value)) return false;
        quad.isAddress &= value < kNoOctet;
        quad.address = quad.address << 8 | (value & 0xFF);
    }
    return true;
}

}  // namespace

bool IsLowerCaseName(std::string_view text) {
    constexpr std::size_t kShortest = 3;
    if (text.size() < kShortest || !std::all_of(text.begin(), text.end(), IsNameCharacter)) return false;
    return std::any_of(text.begin() + 1, text.end() - 1, IsLower);
}

std::optional<std::string_view> AddressInBrackets(std::string_view text) {
    if (text.starts_with('[')) text.remove_prefix(1);
    if (text.ends_with(']')) text.remove_suffix(1);
    if (ReadDottedQuad(text)) return text;
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon + 1 == text.size()) return std::nullopt;
    return std::all_of(text.begin(), text.end(), IsColonOrHex) ? std::optional(text) : std::nullopt;
}

std::optional<DottedQuad> ReadDottedQuad(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    DottedQuad quad;
    return TakeQuad(at, end, quad) && at == end ? std::optional(quad) : std::nullopt;
}

std::optional<Ipv4Range> ReadIpv4Range(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    DottedQuad first, second;
    if (!TakeQuad(at, end, first) || at == end || *at++ != '-') return std::nullopt;
    if (!TakeQuad(at, end, second) || at != end) return std::nullopt;
    if (!first.isAddress || !second.isAddress) return Ipv4Range{};
    return Ipv4Range{std::min(first.address, second.address), std::max(first.address, second.address)};
}

}  // namespace quillon
