#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillon::platform {

/// The page that console programs write in; outside Windows that is UTF-8.
inline constexpr std::uint32_t kOemCodePage = 1;

/// Text of a code page, by its Windows number, in UTF-8; what the page does not have becomes U+FFFD or is
/// what the system makes of it. Nothing for a page that the system does not have, see LastError().
std::optional<std::string> CodePageToUtf8(std::string_view bytes, std::uint32_t page);

}  // namespace quillon::platform
