#include "platform/AccountApi.h"

#include <charconv>
#include <cstdint>

#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/native/UserName.h"

namespace quillon::platform {

namespace {

constexpr std::uint32_t kInvalidSid = 1337;
constexpr std::size_t kHeadSize = 8;
constexpr std::size_t kMaxSubAuthorities = 15;
constexpr std::uint64_t kUnixAuthority = 22;
constexpr std::uint32_t kUnixUsers = 1;

/// Takes "-" and a number of decimal digits from the front of a text.
std::optional<std::uint64_t> TakeNumber(std::string_view& text) {
    if (!text.starts_with('-')) return std::nullopt;
    text.remove_prefix(1);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

std::optional<Sid> ParseNumbers(std::string_view text) {
    const auto revision = TakeNumber(text);
    const auto authority = TakeNumber(text);
    if (revision != 1 || !authority || *authority >> 48 != 0) return std::nullopt;
    Sid sid{1, 0};
    for (int shift = 40; shift >= 0; shift -= 8) {
        sid.push_back(static_cast<unsigned char>(*authority >> shift));
    }
    for (; !text.empty(); ++sid[1]) {
        const auto number = TakeNumber(text);
        if (!number || *number > UINT32_MAX || sid[1] == kMaxSubAuthorities) return std::nullopt;
        for (int shift = 0; shift < 32; shift += 8) {
            sid.push_back(static_cast<unsigned char>(*number >> shift));
        }
    }
    return sid[1] == 0 ? std::nullopt : std::optional(sid);
}

std::uint64_t AuthorityOf(const Sid& sid) {
    std::uint64_t authority = 0;
    for (std::size_t i = 2; i < kHeadSize; ++i) authority = authority << 8 | sid[i];
    return authority;
}

std::uint32_t SubAuthorityOf(const Sid& sid, std::size_t index) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i) number = number << 8 | sid[kHeadSize + index * 4 + i - 1];
    return number;
}

}  // namespace

std::optional<Sid> ParseSid(const std::wstring& text) {
    const std::string narrow = base::ToUtf8(text);
    const bool isSid = narrow.starts_with("S-") || narrow.starts_with("s-");
    auto sid = isSid ? ParseNumbers(std::string_view(narrow).substr(1)) : std::nullopt;
    if (!sid) SetLastErrorCode(kInvalidSid);
    return sid;
}

bool IsUserAccount(const Sid& sid, char*, char*) {
    return AuthorityOf(sid) == kUnixAuthority && sid[1] == 2 && SubAuthorityOf(sid, 0) == kUnixUsers &&
           UserName(SubAuthorityOf(sid, 1)).has_value();
}

LuidParts PartsOf(const LUID& luid) { return {luid.LowPart, luid.HighPart}; }

}  // namespace quillon::platform
