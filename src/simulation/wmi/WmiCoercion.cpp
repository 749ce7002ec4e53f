#include "simulation/wmi/WmiCoercion.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <optional>

#include "base/Characters.h"
#include "simulation/WbemCode.h"

namespace quillon::simulation {

namespace {

struct Range {
    VARTYPE held;
    long long least, most;
};

/// Returns the range of an integer type of up to 32 bits, and the variant type that holds it.
std::optional<Range> RangeOf(CIMTYPE type) {
    switch (type) {
        case CIM_SINT8:
            return Range{VT_I2, -0x80, 0x7F};
        case CIM_UINT8:
            return Range{VT_UI1, 0, 0xFF};
        case CIM_SINT16:
            return Range{VT_I2, -0x8000, 0x7FFF};
        case CIM_CHAR16:
            return Range{VT_I2, 0, 0xFFFF};
        case CIM_UINT16:
            return Range{VT_I4, 0, 0xFFFF};
        case CIM_SINT32:
            return Range{VT_I4, -0x80000000LL, 0x7FFFFFFF};
        case CIM_UINT32:
            return Range{VT_I4, 0, 0xFFFFFFFFLL};
        default:
            return std::nullopt;
    }
}

HRESULT Change(const VARIANT& value, VARTYPE type, _variant_t& changed) {
    _variant_t source(value);  // the system's takes one that it might change
    const HRESULT result = VariantChangeTypeEx(&changed, &source, LOCALE_INVARIANT, 0, type);
    if (SUCCEEDED(result)) return S_OK;
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();  // nothing is said about the value
    return result == DISP_E_OVERFLOW ? Code(WBEM_E_VALUE_OUT_OF_RANGE) : Code(WBEM_E_TYPE_MISMATCH);
}

HRESULT CoerceSmall(const VARIANT& value, const Range& range, _variant_t& converted) {
    _variant_t number;
    if (const HRESULT result = Change(value, VT_I8, number); FAILED(result)) return result;
    if (number.llVal < range.least || number.llVal > range.most) return Code(WBEM_E_VALUE_OUT_OF_RANGE);
    converted = IntegerVariant(range.held, number.llVal);
    return S_OK;
}

HRESULT CoerceLarge(const VARIANT& value, bool isSigned, _variant_t& converted) {
    _variant_t number;
    const HRESULT result = Change(value, VT_I8, number);
    if (SUCCEEDED(result)) {
        if (!isSigned && number.llVal < 0) return Code(WBEM_E_VALUE_OUT_OF_RANGE);
        converted = TextVariant(std::to_wstring(number.llVal));
        return S_OK;
    }
    if (isSigned || result != Code(WBEM_E_VALUE_OUT_OF_RANGE)) return result;
    if (const HRESULT unsignedResult = Change(value, VT_UI8, number); FAILED(unsignedResult)) {
        return unsignedResult;
    }
    converted = TextVariant(std::to_wstring(number.ullVal));
    return S_OK;
}

/// yyyymmddHHMMSS.mmmmmm+UUU, ddddddddHHMMSS.mmmmmm:000, where an asterisk stands for an open digit.
bool IsCimDateTime(std::wstring_view text) {
    constexpr std::wstring_view kForm = L"dddddddddddddd.dddddd*ddd";
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](wchar_t c, wchar_t form) {
        if (form == L'd') return base::IsDigit(c) || c == L'*';
        return form == L'.' ? c == L'.' : c == L'+' || c == L'-' || c == L':';
    });
}

HRESULT CoerceText(const VARIANT& value, CIMTYPE type, _variant_t& converted) {
    if (type == CIM_STRING) return Change(value, VT_BSTR, converted);
    if (value.vt != VT_BSTR) return Code(WBEM_E_TYPE_MISMATCH);
    if (type == CIM_DATETIME && !IsCimDateTime(View(value.bstrVal))) return Code(WBEM_E_TYPE_MISMATCH);
    converted = value;
    return S_OK;
}

HRESULT CoerceScalar(const VARIANT& value, CIMTYPE type, _variant_t& converted) {
    if (const auto range = RangeOf(type)) return CoerceSmall(value, *range, converted);
    switch (type) {
        case CIM_SINT64:
        case CIM_UINT64:
            return CoerceLarge(value, type == CIM_SINT64, converted);
        case CIM_REAL32:
            return Change(value, VT_R4, converted);
        case CIM_REAL64:
            return Change(value, VT_R8, converted);
        case CIM_BOOLEAN:
            return Change(value, VT_BOOL, converted);
        case CIM_STRING:
        case CIM_DATETIME:
        case CIM_REFERENCE:
            return CoerceText(value, type, converted);
        case CIM_OBJECT:
            if (value.vt != VT_UNKNOWN) return Code(WBEM_E_TYPE_MISMATCH);
            converted = value;
            return S_OK;
        default:
            return Code(WBEM_E_TYPE_MISMATCH);
    }
}

/// Returns the variant type that holds the elements of an array.
VARTYPE HeldAs(CIMTYPE type) {
    if (const auto range = RangeOf(type)) return range->held;
    switch (type) {
        case CIM_REAL32:
            return VT_R4;
        case CIM_REAL64:
            return VT_R8;
        case CIM_BOOLEAN:
            return VT_BOOL;
        case CIM_OBJECT:
            return VT_UNKNOWN;
        default:
            return VT_BSTR;
    }
}

HRESULT ReadElement(SAFEARRAY* array, VARTYPE type, LONG index, _variant_t& element) {
    if (type == VT_DECIMAL) return Code(WBEM_E_TYPE_MISMATCH);  // overlies the type in a variant
    VARIANT read{};
    void* const target = type == VT_VARIANT ? static_cast<void*>(&read) : &read.llVal;
    if (FAILED(SafeArrayGetElement(array, &index, target))) return Code(WBEM_E_TYPE_MISMATCH);
    if (type != VT_VARIANT) read.vt = type;
    element = read;
    VariantClear(&read);
    return S_OK;
}

HRESULT CoerceElement(SAFEARRAY* from, LONG index, SAFEARRAY* to, LONG target, CIMTYPE type) {
    VARTYPE given = VT_EMPTY;
    _variant_t element, converted;
    if (FAILED(SafeArrayGetVartype(from, &given))) return Code(WBEM_E_TYPE_MISMATCH);
    if (const HRESULT result = ReadElement(from, given, index, element); FAILED(result)) return result;
    // An array holds these by their bits already.
    if (type == CIM_UINT32 && element.vt == VT_I4)
        element = IntegerVariant(VT_I8, static_cast<ULONG>(element.lVal));
    if (type == CIM_CHAR16 && element.vt == VT_I2)
        element = IntegerVariant(VT_I8, static_cast<unsigned short>(element.iVal));
    if (const HRESULT result = CoerceScalar(element, type, converted); FAILED(result)) return result;
    const bool isItself = converted.vt == VT_BSTR || converted.vt == VT_UNKNOWN;
    void* const value = isItself ? static_cast<void*>(converted.bstrVal) : &converted.llVal;
    return SafeArrayPutElement(to, &target, value);
}

HRESULT CoerceArray(const VARIANT& value, CIMTYPE type, _variant_t& converted) {
    LONG first = 0;
    LONG last = -1;
    if (value.parray == nullptr || FAILED(SafeArrayGetLBound(value.parray, 1, &first)) ||
        FAILED(SafeArrayGetUBound(value.parray, 1, &last))) {
        return Code(WBEM_E_TYPE_MISMATCH);
    }
    _variant_t array;
    array.parray = SafeArrayCreateVector(HeldAs(type), 0, static_cast<ULONG>(last - first + 1));
    if (array.parray == nullptr) return Code(WBEM_E_OUT_OF_MEMORY);
    array.vt = static_cast<VARTYPE>(VT_ARRAY | HeldAs(type));
    for (LONG i = first; i <= last; ++i) {
        const HRESULT result = CoerceElement(value.parray, i, array.parray, i - first, type);
        if (FAILED(result)) return result;
    }
    converted = array;
    return S_OK;
}

}  // namespace

HRESULT Coerce(const VARIANT& value, CIMTYPE type, _variant_t& converted) {
    if (value.vt == VT_EMPTY || value.vt == VT_NULL) {
        converted.Clear();
        converted.vt = VT_NULL;
        return S_OK;
    }
    const bool isArray = (type & CIM_FLAG_ARRAY) != 0;
    if (isArray != ((value.vt & VT_ARRAY) != 0)) return Code(WBEM_E_TYPE_MISMATCH);
    if (isArray) return CoerceArray(value, type & ~static_cast<CIMTYPE>(CIM_FLAG_ARRAY), converted);
    return CoerceScalar(value, type, converted);
}

std::wstring CimText(const VARIANT& value, CIMTYPE type) {
    if (type == CIM_UINT32 && value.vt == VT_I4) {
        return std::to_wstring(static_cast<unsigned long>(static_cast<ULONG>(value.lVal)));
    }
    _variant_t text;
    if ((value.vt & VT_ARRAY) != 0 || FAILED(Change(value, VT_BSTR, text))) return {};
    return std::wstring(View(text.bstrVal));
}

_variant_t TextVariant(std::wstring_view text) {
    _variant_t value;
    value.bstrVal = SysAllocStringLen(text.data(), static_cast<unsigned int>(text.size()));
    if (value.bstrVal == nullptr) throw std::bad_alloc();
    value.vt = VT_BSTR;
    return value;
}

_variant_t IntegerVariant(VARTYPE type, long long number) {
    _variant_t value;
    value.vt = type;
    if (type == VT_UI1) value.bVal = static_cast<unsigned char>(number);
    if (type == VT_I2) value.iVal = static_cast<short>(number);
    if (type == VT_I4) value.lVal = static_cast<LONG>(number);
    if (type == VT_I8) value.llVal = number;
    return value;
}

}  // namespace quillon::simulation
