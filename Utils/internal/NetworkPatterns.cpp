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

/// Four numbers of up to three digits, whatever their values.
std::optional<base::Ipv4Numbers> TakeQuad(std::string_view& text) {
    return base::TakeIpv4Numbers(text, base::Ipv4Rule::ThreeDigits);
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
    std::string_view rest = text;
    if (TakeQuad(rest) && rest.empty()) return text;
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon + 1 == text.size()) return std::nullopt;
    return std::all_of(text.begin(), text.end(), IsColonOrHex) ? std::optional(text) : std::nullopt;
}

std::optional<Ipv4Range> ReadIpv4Range(std::string_view text) {
    const auto first = TakeQuad(text);
    if (!first || !text.starts_with('-')) return std::nullopt;
    text.remove_prefix(1);
    const auto second = TakeQuad(text);
    if (!second || !text.empty()) return std::nullopt;
    const auto begin = first->Address(), end = second->Address();
    if (!begin || !end) return Ipv4Range{};
    return Ipv4Range{std::min(*begin, *end), std::max(*begin, *end)};
}

}  // namespace quillon
