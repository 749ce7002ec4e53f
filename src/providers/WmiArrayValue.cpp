#include "providers/WmiArrayValue.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "base/Utf.h"
#include "platform/ole/ComError.h"
#include "providers/WmiOwners.h"

namespace quillon {

namespace {

struct Held {
    VARTYPE converted;  // as what the text is read
    VARTYPE stored;     // as what the same bits stand in the array
};

/// 64-bit integers are texts for WMI, and a UINT32 keeps its bits in a VT_I4.
std::optional<Held> HeldAs(CIMTYPE type) {
    switch (type) {
        case CIM_UINT8:
            return Held{VT_UI1, VT_UI1};
        case CIM_SINT8:
            return Held{VT_I1, VT_I2};
        case CIM_SINT16:
            return Held{VT_I2, VT_I2};
        case CIM_CHAR16:
            return Held{VT_UI2, VT_I2};
        case CIM_UINT16:
            return Held{VT_UI2, VT_I4};
        case CIM_SINT32:
            return Held{VT_I4, VT_I4};
        case CIM_UINT32:
            return Held{VT_UI4, VT_I4};
        case CIM_REAL32:
            return Held{VT_R4, VT_R4};
        case CIM_REAL64:
            return Held{VT_R8, VT_R8};
        case CIM_BOOLEAN:
            return Held{VT_BOOL, VT_BOOL};
        case CIM_SINT64:
        case CIM_UINT64:
        case CIM_STRING:
        case CIM_DATETIME:
        case CIM_REFERENCE:
            return Held{VT_BSTR, VT_BSTR};
        default:
            return std::nullopt;
    }
}

std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end == std::string_view::npos ? end : end + 1, text.size()));
    }
    return lines;
}

/// Widens what does not stand in an array as it was read.
void Store(const Held& held, _variant_t& value) {
    if (held.converted == VT_I1) value.iVal = value.cVal;
    if (held.stored == VT_I4 && held.converted == VT_UI2) value.lVal = value.uiVal;
    value.vt = held.stored;
}

bool PutLine(SAFEARRAY* array, LONG index, std::string_view line, const Held& held) {
    _variant_t value = TextVariant(base::ToWide(line));
    if (FAILED(::VariantChangeTypeEx(&value, &value, LOCALE_INVARIANT, 0, held.converted))) return false;
    Store(held, value);
    void* const element = held.stored == VT_BSTR ? static_cast<void*>(value.bstrVal) : &value.llVal;
    return SUCCEEDED(::SafeArrayPutElement(array, &index, element));
}

}  // namespace

std::optional<_variant_t> ArrayOfLines(const std::string& text, CIMTYPE elementType) {
    const auto held = HeldAs(elementType);
    if (!held) return std::nullopt;
    const auto lines = LinesOf(text);
    _variant_t array;
    array.parray = ::SafeArrayCreateVector(held->stored, 0, static_cast<ULONG>(lines.size()));
    if (array.parray == nullptr) platform::RaiseComError(E_OUTOFMEMORY);
    array.vt = static_cast<VARTYPE>(VT_ARRAY | held->stored);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!PutLine(array.parray, static_cast<LONG>(i), lines[i], *held)) return std::nullopt;
    }
    return array;
}

}  // namespace quillon
