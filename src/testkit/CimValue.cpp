#include "testkit/CimValue.h"

#include <charconv>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Utf.h"
#include "quillon/TimePoint.h"
#include "simulation/wmi/WmiCoercion.h"

namespace quillon::testkit {

namespace {

/// Returns a time point as CIM writes it, from its text "2026-01-31T18:30:00.123Z".
std::string CimDateTime(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (c >= '0' && c <= '9') digits += c;
    }
    constexpr std::size_t kToSeconds = 14;
    return digits.substr(0, kToSeconds) + '.' + digits.substr(kToSeconds) + "000+000";
}

_variant_t PlainVariant(const Variant& value) {
    if (value.TypeIs(typeid(bool))) return _variant_t(value.GetBoolValue());
    if (value.TypeIs(typeid(long long))) return simulation::IntegerVariant(VT_I8, value.GetLongLongValue());
    if (value.TypeIs(typeid(double))) return _variant_t(value.GetDoubleValue());
    const std::string text = value.AsString();
    return simulation::TextVariant(base::ToWide(value.TypeIs(typeid(TimePoint)) ? CimDateTime(text) : text));
}

Variant IntegerOrText(const std::string& name, const std::string& text) {
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber ? Variant(name, number) : Variant(name, text);
}

/// Returns an array of a text's lines.
_variant_t LinesVariant(const std::string& text) {
    std::vector<std::wstring> lines;
    std::wistringstream stream(base::ToWide(text));
    for (std::wstring line; std::getline(stream, line);) lines.push_back(line);
    _variant_t array;
    array.parray = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(lines.size()));
    if (array.parray == nullptr) throw std::bad_alloc();
    array.vt = VT_ARRAY | VT_BSTR;
    for (LONG i = 0; i < static_cast<LONG>(lines.size()); ++i) {
        LONG index = i;
        _variant_t element = simulation::TextVariant(lines[static_cast<std::size_t>(i)]);
        if (FAILED(SafeArrayPutElement(array.parray, &index, element.bstrVal))) throw std::bad_alloc();
    }
    return array;
}

/// Returns an element of an array that holds `type`.
_variant_t ElementOf(SAFEARRAY* array, VARTYPE type, LONG index) {
    _variant_t element;
    if (FAILED(SafeArrayGetElement(array, &index, &element.llVal))) return element;
    element.vt = type;
    return element;
}

/// Returns the values of an array in lines.
std::string LinesOf(SAFEARRAY* array, CIMTYPE type) {
    LONG first = 0, last = -1;
    VARTYPE held = VT_EMPTY;
    std::string lines;
    if (FAILED(SafeArrayGetVartype(array, &held)) || FAILED(SafeArrayGetLBound(array, 1, &first)) ||
        FAILED(SafeArrayGetUBound(array, 1, &last)))
        return lines;
    for (LONG i = first; i <= last; ++i) {
        if (i != first) lines += '\n';
        const _variant_t element = ElementOf(array, held, i);
        if (type == CIM_BOOLEAN) {
            lines += element.boolVal == VARIANT_FALSE ? "false" : "true";
        } else {
            lines += base::ToUtf8(simulation::CimText(element, type));
        }
    }
    return lines;
}

CIMTYPE NumberOf(CimType type) {
    static constexpr CIMTYPE numbers[] = {CIM_BOOLEAN, CIM_SINT8,  CIM_UINT8,   CIM_SINT16, CIM_UINT16,
                                          CIM_SINT32,  CIM_UINT32, CIM_SINT64,  CIM_UINT64, CIM_REAL32,
                                          CIM_REAL64,  CIM_STRING, CIM_DATETIME};
    return numbers[static_cast<std::size_t>(type)];
}

}  // namespace

CIMTYPE NumberOf(const WmiProperty& property) {
    return NumberOf(property.type) | (property.isArray ? static_cast<CIMTYPE>(CIM_FLAG_ARRAY) : 0);
}

_variant_t ToCim(const Variant& value, const WmiProperty& property) {
    _variant_t converted;
    if (value.IsNull()) {
        converted.vt = VT_NULL;
        return converted;
    }
    const _variant_t plain = property.isArray ? LinesVariant(value.AsString()) : PlainVariant(value);
    if (FAILED(simulation::Coerce(plain, NumberOf(property), converted)))
        throw std::invalid_argument("The value of '" + value.GetName() + "' does not fit its type");
    return converted;
}

Variant FromCim(const _variant_t& value, const WmiProperty& property) {
    const std::string& name = property.name;
    if (value.vt == VT_NULL || value.vt == VT_EMPTY) return Variant::NullVariant(name);
    if ((value.vt & VT_ARRAY) != 0) return Variant(name, LinesOf(value.parray, NumberOf(property.type)));
    if (value.vt == VT_BOOL) return Variant(name, value.boolVal != VARIANT_FALSE);
    if (value.vt == VT_R4) return Variant(name, static_cast<double>(value.fltVal));
    if (value.vt == VT_R8) return Variant(name, value.dblVal);
    const CimType type = property.type;
    const std::string text = base::ToUtf8(simulation::CimText(value, NumberOf(type)));
    return type == CimType::String || type == CimType::DateTime ? Variant(name, text)
                                                                : IntegerOrText(name, text);
}

}  // namespace quillon::testkit
