#pragma once

#include <algorithm>
#include <string_view>

namespace quillon::base {

// The C locale's classification and case mapping of single units, narrow or wide.

template <class Char>
constexpr bool IsSpace(Char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

template <class Char>
constexpr bool IsDigit(Char c) {
    return c >= '0' && c <= '9';
}

template <class Char>
constexpr Char Lower(Char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<Char>(c + ('a' - 'A')) : c;
}

template <class Char>
constexpr Char Upper(Char c) {
    return c >= 'a' && c <= 'z' ? static_cast<Char>(c - ('a' - 'A')) : c;
}

template <class Char>
constexpr bool IsLetter(Char c) {
    return Lower(c) >= 'a' && Lower(c) <= 'z';
}

template <class Char>
constexpr bool EqualIgnoringCase(std::basic_string_view<Char> a, std::basic_string_view<Char> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](Char left, Char right) { return Lower(left) == Lower(right); });
}

}  // namespace quillon::base
