#pragma once

#include <string>
#include <string_view>

#include "platform/Wbem.h"

namespace quillon {

/// Returns the text of a value, as the system converts it without regard to the locale, in UTF-8:
/// what is no UTF-16 becomes U+FFFD. Throws as platform::RaiseComError when it has none.
std::string VariantText(const VARIANT& value);

/// How reading a number went.
enum class NumberState { Read, NoNumber, OutOfRange };

/// Reads a number as the standard conversions do: white space, a sign, and the characters up to the first
/// one that is not part of the number.
NumberState ReadInteger(std::string_view text, long long& number);
NumberState ReadReal(std::string_view text, double& number);

}  // namespace quillon
