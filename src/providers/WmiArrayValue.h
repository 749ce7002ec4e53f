#pragma once

#include <optional>
#include <string>

#include "platform/Wbem.h"

namespace quillon {

/// Makes the array of a text in UTF-8 with one element in each line; the empty text is an empty array. The
/// elements have the variant type in which WMI holds those of `elementType`. Nothing when one cannot be
/// converted, or for a type without a text.
std::optional<_variant_t> ArrayOfLines(const std::string& text, CIMTYPE elementType);

}  // namespace quillon
