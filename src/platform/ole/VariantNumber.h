#pragma once

#include <compare>
#include <optional>
#include <string_view>
#include <variant>

#include "platform/ole/WbemTypes.h"

namespace quillon::platform {

/// A number as variants hold them, without loss.
using VariantNumber = std::variant<long long, unsigned long long, double>;

/// White space, a sign, a decimal number with or without fraction and exponent, white
/// space; unsigned only past the signed range, a real past the unsigned one. Nothing
/// when it is anything else, or past a double.
std::optional<VariantNumber> ReadVariantNumber(std::wstring_view text);
/// VT_EMPTY is 0, a true VT_BOOL -1; a text is read. Nothing for what has no number.
std::optional<VariantNumber> VariantNumberOf(const VARIANT& value);
/// Compares the values exactly, whatever the types are.
std::partial_ordering CompareNumbers(const VariantNumber& left, const VariantNumber& right);

}  // namespace quillon::platform
