#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "base/Characters.h"
#include "base/Utf.h"
#include "platform/ole/VariantNumber.h"
#include "platform/ole/WbemTypes.h"

namespace quillon::windows {

namespace {

using Number = quillon::platform::VariantNumber;

template <std::integral T>
HRESULT StoreInteger(const Number& number, T& target) {
    const auto store = [&target](auto value) -> HRESULT {
        if constexpr (std::integral<decltype(value)>) {
            if (!std::in_range<T>(value)) return DISP_E_OVERFLOW;
            target = static_cast<T>(value);
        } else {
            const double whole = std::nearbyint(value);  // halves go to the even neighbour
            // The upper limit itself is no double for 64 bits.
            if (!(whole >= static_cast<double>(std::numeric_limits<T>::min()) &&
                  whole < std::ldexp(1.0, std::numeric_limits<T>::digits))) {
                return DISP_E_OVERFLOW;
            }
            target = static_cast<T>(whole);
        }
        return S_OK;
    };
    return std::visit(store, number);
}

double AsDouble(const Number& number) {
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

HRESULT StoreFloat(const Number& number, float& target) {
    const double value = AsDouble(number);
    if (std::isfinite(value) && std::fabs(value) > std::numeric_limits<float>::max()) return DISP_E_OVERFLOW;
    target = static_cast<float>(value);
    return S_OK;
}

/// Writes as many digits as the system does: 7 for a float, 15 for a double.
std::string RealText(double value, int digits) {
    std::array<char, 40> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, digits)
            .ptr;
    std::string text(buffer.data(), end);
    for (char& c : text) c = quillon::base::Upper(c);
    return text;
}

std::string NumberText(const VARIANT& value, const Number& number) {
    if (value.vt == VT_EMPTY) return {};
    if (value.vt == VT_R4) return RealText(value.fltVal, std::numeric_limits<float>::digits10 + 1);
    const auto write = [](auto figure) {
        if constexpr (std::floating_point<decltype(figure)>) {
            return RealText(figure, std::numeric_limits<double>::digits10);
        } else {
            return std::to_string(figure);
        }
    };
    return std::visit(write, number);
}

HRESULT StoreText(const VARIANT& value, const Number& number, BSTR& target) {
    const std::wstring text = quillon::base::ToWide(NumberText(value, number));
    target = SysAllocStringLen(text.data(), static_cast<unsigned int>(text.size()));
    return target == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT StoreBool(const Number& number, VARIANT_BOOL& target) {
    target = AsDouble(number) != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

std::optional<VARIANT_BOOL> BoolWord(const VARIANT& value) {
    if (value.vt != VT_BSTR) return std::nullopt;
    const std::wstring_view text(value.bstrVal, SysStringLen(value.bstrVal));
    if (quillon::base::EqualIgnoringCase(text, std::wstring_view(L"true"))) return VARIANT_TRUE;
    if (quillon::base::EqualIgnoringCase(text, std::wstring_view(L"false"))) return VARIANT_FALSE;
    return std::nullopt;
}

HRESULT Store(const VARIANT& source, const Number& number, VARTYPE type, VARIANT& target) {
    target.vt = type;
    switch (type) {
        case VT_I1:
            return StoreInteger(number, target.cVal);
        case VT_UI1:
            return StoreInteger(number, target.bVal);
        case VT_I2:
            return StoreInteger(number, target.iVal);
        case VT_UI2:
            return StoreInteger(number, target.uiVal);
        case VT_I4:
            return StoreInteger(number, target.lVal);
        case VT_UI4:
            return StoreInteger(number, target.ulVal);
        case VT_I8:
            return StoreInteger(number, target.llVal);
        case VT_UI8:
            return StoreInteger(number, target.ullVal);
        case VT_R4:
            return StoreFloat(number, target.fltVal);
        case VT_R8:
            target.dblVal = AsDouble(number);
            return S_OK;
        case VT_BOOL:
            return StoreBool(number, target.boolVal);
        case VT_BSTR:
            return StoreText(source, number, target.bstrVal);
        default:
            return DISP_E_TYPEMISMATCH;
    }
}

HRESULT Convert(const VARIANT& source, VARTYPE type, VARIANT& target) {
    if (source.vt == type) return VariantCopy(&target, &source);
    if (const auto word = BoolWord(source); word && type == VT_BOOL) {
        target.vt = VT_BOOL;
        target.boolVal = *word;
        return S_OK;
    }
    const auto number = quillon::platform::VariantNumberOf(source);
    return number ? Store(source, *number, type, target) : DISP_E_TYPEMISMATCH;
}

}  // namespace

HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID, std::uint16_t, VARTYPE type) {
    if (target == nullptr || source == nullptr) return E_INVALIDARG;
    VARIANT converted{};
    const HRESULT result = Convert(*source, type, converted);
    if (FAILED(result)) return result;
    VariantClear(target);
    *target = converted;
    return S_OK;
}

}  // namespace quillon::windows
