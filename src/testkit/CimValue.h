#pragma once

#include "platform/Wbem.h"
#include "quillon/Variant.h"
#include "quillon/testkit/WmiRepository.h"

namespace quillon::testkit {

/// Returns the number by which WMI names the type.
CIMTYPE NumberOf(CimType type);
/// Returns the value as WMI holds it. Throws std::invalid_argument when it does not fit the type.
_variant_t ToCim(const Variant& value, CimType type);
/// Returns a value that WMI holds: integers as long long, past its range as text.
Variant FromCim(const std::string& name, const _variant_t& value, CimType type);

}  // namespace quillon::testkit
