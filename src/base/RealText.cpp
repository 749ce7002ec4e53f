#include "base/RealText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>

namespace quillon::base {
namespace {

/// The number, or the end of the range that it is past.
std::int32_t ReadExponent(std::string_view exponent) {
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    std::int32_t power = 0;
    const auto error = std::from_chars(exponent.data(), exponent.data() + exponent.size(), power).ec;
    if (error != std::errc::result_out_of_range) return power;
    using Limits = std::numeric_limits<std::int32_t>;
    return exponent.starts_with('-') ? Limits::min() : Limits::max();
}

/// Whether the size of a number is below 1.
bool IsBelowOne(std::string_view number) {
    const std::size_t mantissaEnd = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, mantissaEnd);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = mantissa.find_first_not_of("0.");
    if (first == std::string_view::npos) return true;
    // How many digits the number has before its point, or minus the zeros behind it.
    const auto magnitude =
        static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first) + (first > point ? 1 : 0);
    return magnitude + ReadExponent(number.substr(std::min(mantissaEnd + 1, number.size()))) <= 0;
}

}  // namespace

double RealBeyondRange(std::string_view number) {
    const bool isNegative = number.starts_with('-');
    if (isNegative) number.remove_prefix(1);
    const double size = IsBelowOne(number) ? 0.0 : std::numeric_limits<double>::infinity();
    return isNegative ? -size : size;
}

}  // namespace quillon::base
