#pragma once

#include "platform/Wbem.h"
#include "quillon/Variant.h"
#include "quillon/testkit/WmiRepository.h"

namespace quillon::testkit {

/// Returns the number by which WMI names the property's type.
CIMTYPE NumberOf(const WmiProperty& property);
/// Returns the value as WMI holds it. Throws std::invalid_argument when it does not fit the type.
_variant_t ToCim(const Variant& value, const WmiProperty& property);
/// Returns a value that WMI holds: integers as long long, past its range as text. The
/// library passes no arrays to methods.
Variant FromCim(const _variant_t& value, const WmiProperty& property);

}  // namespace quillon::testkit
