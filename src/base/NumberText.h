#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

#include "base/Characters.h"

namespace quillon::base {

inline void SkipSpace(std::string_view& text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
}

/// Takes a decimal number off the front of `text`, as strtoull and scanf's "%llu"
/// read it: white space, a sign, digits. A minus negates modulo 2^64; past the
/// range it is the largest number. Nothing when there is no digit.
inline std::optional<std::uint64_t> TakeUnsigned(std::string_view& text) {
    SkipSpace(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::invalid_argument) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (error == std::errc::result_out_of_range) return std::numeric_limits<std::uint64_t>::max();
    return negative ? 0 - number : number;
}

/// Reads a number as strtol and atoi do: white space, a sign, the leading digits. 0 without a digit; the
/// end of the range when there are too many.
template <class Number>
Number ReadSigned(std::string_view text) {
    SkipSpace(text);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    Number number = 0;
    const std::errc error = std::from_chars(text.data(), text.data() + text.size(), number).ec;
    if (error != std::errc::result_out_of_range) return number;
    return text.starts_with('-') ? std::numeric_limits<Number>::min() : std::numeric_limits<Number>::max();
}

}  // namespace quillon::base
