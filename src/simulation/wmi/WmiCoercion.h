#pragma once

#include <string>
#include <string_view>

#include "platform/Wbem.h"

namespace quillon::simulation {

/// Converts a value to the form in which WMI holds that of a property: numbers are checked for the
/// type's range, those of 64 bits become texts, a UINT32 keeps its bits in a VT_I4. Nothing stays NULL.
/// WBEM_E_TYPE_MISMATCH (also between arrays and scalars), WBEM_E_VALUE_OUT_OF_RANGE.
HRESULT Coerce(const VARIANT& value, CIMTYPE type, _variant_t& converted);

/// The text of a scalar that WMI holds for a property; empty for what has none.
std::wstring CimText(const VARIANT& value, CIMTYPE type);

_variant_t TextVariant(std::wstring_view text);
/// `type` is VT_UI1, VT_I2, VT_I4 or VT_I8; what does not fit is cut off.
_variant_t IntegerVariant(VARTYPE type, long long number);
/// The whole text, zeros included.
inline std::wstring_view View(BSTR text) { return {text, SysStringLen(text)}; }

}  // namespace quillon::simulation
