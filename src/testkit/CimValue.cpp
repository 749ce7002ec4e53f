#include "testkit/CimValue.h"

#include <charconv>
#include <stdexcept>
#include <string>

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

}  // namespace

CIMTYPE NumberOf(CimType type) {
    static constexpr CIMTYPE numbers[] = {CIM_BOOLEAN, CIM_SINT8,  CIM_UINT8,   CIM_SINT16, CIM_UINT16,
                                          CIM_SINT32,  CIM_UINT32, CIM_SINT64,  CIM_UINT64, CIM_REAL32,
                                          CIM_REAL64,  CIM_STRING, CIM_DATETIME};
    return numbers[static_cast<std::size_t>(type)];
}

_variant_t ToCim(const Variant& value, CimType type) {
    _variant_t converted;
    if (value.IsNull()) {
        converted.vt = VT_NULL;
    } else if (FAILED(simulation::Coerce(PlainVariant(value), NumberOf(type), converted))) {
        throw std::invalid_argument("The value of '" + value.GetName() + "' does not fit its type");
    }
    return converted;
}

Variant FromCim(const std::string& name, const _variant_t& value, CimType type) {
    if (value.vt == VT_NULL || value.vt == VT_EMPTY) return Variant::NullVariant(name);
    if (value.vt == VT_BOOL) return Variant(name, value.boolVal != VARIANT_FALSE);
    if (value.vt == VT_R4) return Variant(name, static_cast<double>(value.fltVal));
    if (value.vt == VT_R8) return Variant(name, value.dblVal);
    const std::string text = base::ToUtf8(simulation::CimText(value, NumberOf(type)));
    return type == CimType::String || type == CimType::DateTime ? Variant(name, text)
                                                                : IntegerOrText(name, text);
}

}  // namespace quillon::testkit
