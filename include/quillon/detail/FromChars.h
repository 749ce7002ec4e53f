#pragma once

#include <charconv>
#include <system_error>
#ifndef __cpp_lib_to_chars  // in <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#endif

namespace quillon::detail {

/// Reads a number as std::from_chars does. libc++ has no std::from_chars of real numbers before its version
/// 20; here it has one, which is slower.
template <class Number>
std::from_chars_result FromChars(const char* first, const char* last, Number& number) {
    return std::from_chars(first, last, number);
}

#ifndef __cpp_lib_to_chars

inline const char* PassDigits(const char* at, const char* last) {
    while (at != last && *at >= '0' && *at <= '9') ++at;
    return at;
}

/// Gives the end of the decimal number at `first`, which has no sign, and `first` when there is none.
inline const char* EndOfReal(const char* first, const char* last) {
    const char* at = PassDigits(first, last);
    auto digits = at - first;
    if (at != last && *at == '.') {
        const char* const end = PassDigits(at + 1, last);
        digits += end - (at + 1);
        at = end;
    }
    if (digits == 0) return first;
    if (at == last || (*at != 'e' && *at != 'E')) return at;
    const char* power = at + 1;
    if (power != last && (*power == '-' || *power == '+')) ++power;
    const char* const end = PassDigits(power, last);
    return end == power ? at : end;
}

/// Reads "inf", "infinity" and "nan" in any case.
inline std::from_chars_result NamedReal(const char* first, const char* last, bool isNegative,
                                        double& number) {
    const auto starts = [first, last](std::string_view name) {
        if (last - first < static_cast<std::ptrdiff_t>(name.size())) return false;
        for (std::size_t i = 0; i < name.size(); ++i) {
            if ((first[i] | 0x20) != name[i]) return false;
        }
        return true;
    };
    using Limits = std::numeric_limits<double>;
    for (const std::string_view name : {"infinity", "inf", "nan"}) {
        if (!starts(name)) continue;
        const double value = name == "nan" ? Limits::quiet_NaN() : Limits::infinity();
        number = isNegative ? -value : value;
        return {first + name.size(), std::errc()};
    }
    return {first, std::errc::invalid_argument};
}

inline std::from_chars_result FromChars(const char* first, const char* last, double& number) {
    const bool isNegative = first != last && *first == '-';
    const char* const digits = isNegative ? first + 1 : first;
    const char* const end = EndOfReal(digits, last);
    if (end == digits) {
        const auto named = NamedReal(digits, last, isNegative, number);
        return named.ec == std::errc() ? named : std::from_chars_result{first, named.ec};
    }
    std::istringstream stream(std::string(first, end));
    stream.imbue(std::locale::classic());
    double value = 0;
    stream >> value;
    // The stream also fails for a number that is not normal, which it has read.
    if (stream.fail() && (value == 0 || std::isinf(value))) return {end, std::errc::result_out_of_range};
    number = value;
    return {end, std::errc()};
}

#endif

}  // namespace quillon::detail
