#include "Utils/internal/NetworkPatterns.h"

#include <algorithm>

#include "base/Characters.h"
#include "base/HexDigits.h"
#include "base/Ipv4Text.h"

namespace quillon {

namespace {

using base::IsDigit;

constexpr bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool IsNameCharacter(char c) { return IsLower(c) || IsDigit(c) || c == '-' || c == '.'; }
constexpr bool IsColonOrHex(char c) { return c == ':' || base::HexDigit(c) >= 0; }

struct Quad {
    std::uint32_t address = 0;
    bool isAddress = true;
};

/// Takes four numbers of up to three digits, whatever their values.
bool TakeQuad(const char*& at, const char* end, Quad& quad) {
    return base::TakeIpv4Numbers<base::Ipv4ThreeDigits>(at, end, [&quad](std::uint32_t number) {
               quad.isAddress &= number <= 0xFF;
               quad.address = quad.address << 8 | (number & 0xFF);
           }) > 0;
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
    const char* at = text.data();
    const char* const end = at + text.size();
    Quad quad;
    if (TakeQuad(at, end, quad) && at == end) return text;
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon + 1 == text.size()) return std::nullopt;
    return std::all_of(text.begin(), text.end(), IsColonOrHex) ? std::optional(text) : std::nullopt;
}

std::optional<Ipv4Range> ReadIpv4Range(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    Quad first, second;
    if (!TakeQuad(at, end, first) || at == end || *at++ != '-') return std::nullopt;
    if (!TakeQuad(at, end, second) || at != end) return std::nullopt;
    if (!first.isAddress || !second.isAddress) return Ipv4Range{};
    return Ipv4Range{std::min(first.address, second.address), std::max(first.address, second.address)};
}

}  // namespace quillon
