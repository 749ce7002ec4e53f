#pragma once

#include <array>

namespace quillon::base {

inline constexpr char kLowerDigits[] = "0123456789abcdef";
inline constexpr char kUpperDigits[] = "0123456789ABCDEF";

inline constexpr std::array<signed char, 256> kDigitValues = [] {
    std::array<signed char, 256> values{};
    values.fill(-1);
    for (int i = 0; i < 16; ++i) {
        values[static_cast<unsigned char>(kLowerDigits[i])] = static_cast<signed char>(i);
        values[static_cast<unsigned char>(kUpperDigits[i])] = static_cast<signed char>(i);
    }
    return values;
}();

/// The value of a hexadecimal digit of either case, negative when it is none.
constexpr int HexDigit(char c) { return kDigitValues[static_cast<unsigned char>(c)]; }

}  // namespace quillon::base
