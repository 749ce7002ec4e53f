#pragma once

#include <string>
#include <string_view>

#include "platform/Wbem.h"

namespace quillon {

/// The text of a value, as the system converts it without regard to the locale, in UTF-8:
/// what is no UTF-16 becomes U+FFFD. Throws as platform::RaiseComError when it has none.
std::string VariantText(const VARIANT& value);

/// How reading a number went.
enum class NumberState { Read, NoNumber, OutOfRange };

/// As the standard conversions read a number: white space, a sign, and what follows up to
/// the first character that is no part of it.
NumberState ReadInteger(std::string_view text, long long& number);
NumberState ReadReal(std::string_view text, double& number);

}  // namespace quillon
