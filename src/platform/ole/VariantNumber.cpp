#include "platform/ole/VariantNumber.h"

#include <cmath>
#include <concepts>
#include <limits>
#include <string>
#include <utility>

#include "base/Characters.h"
#include "base/Utf.h"
#include "quillon/detail/FromChars.h"

namespace quillon::platform {

namespace {

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && base::IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && base::IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

template <class T>
std::optional<VariantNumber> ReadAs(std::string_view text) {
    T number{};
    const auto [end, error] = detail::FromChars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

template <std::integral Integer>
std::partial_ordering CompareWithReal(Integer integer, double real) {
    if (std::isnan(real)) return std::partial_ordering::unordered;
    if (real >= std::ldexp(1.0, std::numeric_limits<Integer>::digits)) return std::partial_ordering::less;
    if (real < static_cast<double>(std::numeric_limits<Integer>::min())) {
        return std::partial_ordering::greater;
    }
    const double whole = std::trunc(real);
    const auto order = integer <=> static_cast<Integer>(whole);
    return order != 0 ? std::partial_ordering(order) : whole <=> real;
}

struct Comparer {
    template <std::integral Left, std::integral Right>
    std::partial_ordering operator()(Left left, Right right) const {
        if (std::cmp_equal(left, right)) return std::partial_ordering::equivalent;
        return std::cmp_less(left, right) ? std::partial_ordering::less : std::partial_ordering::greater;
    }
    template <std::integral Left>
    std::partial_ordering operator()(Left left, double right) const {
        return CompareWithReal(left, right);
    }
    template <std::integral Right>
    std::partial_ordering operator()(double left, Right right) const {
        return 0 <=> CompareWithReal(right, left);
    }
    std::partial_ordering operator()(double left, double right) const { return left <=> right; }
};

}  // namespace

std::optional<VariantNumber> ReadVariantNumber(std::wstring_view text) {
    const std::string narrow = base::ToUtf8(text);
    std::string_view digits = Trimmed(narrow);
    if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
    // FromChars also reads "inf" and "nan", which are no numbers here.
    if (digits.find_first_of("nN") != std::string_view::npos) return std::nullopt;
    if (const auto number = ReadAs<long long>(digits)) return number;
    if (const auto number = ReadAs<unsigned long long>(digits)) return number;
    return ReadAs<double>(digits);
}

std::optional<VariantNumber> VariantNumberOf(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return 0LL;
        case VT_I1:
            return static_cast<long long>(value.cVal);
        case VT_UI1:
            return static_cast<long long>(value.bVal);
        case VT_I2:
            return static_cast<long long>(value.iVal);
        case VT_UI2:
            return static_cast<long long>(value.uiVal);
        case VT_I4:
            return static_cast<long long>(value.lVal);
        case VT_UI4:
            return static_cast<long long>(value.ulVal);
        case VT_I8:
            return value.llVal;
        case VT_UI8:
            return value.ullVal;
        case VT_BOOL:
            return static_cast<long long>(value.boolVal);
        case VT_R4:
            return double{value.fltVal};
        case VT_R8:
            return value.dblVal;
        case VT_BSTR:
            return ReadVariantNumber({value.bstrVal, SysStringLen(value.bstrVal)});
        default:
            return std::nullopt;
    }
}

std::partial_ordering CompareNumbers(const VariantNumber& left, const VariantNumber& right) {
    return std::visit(Comparer(), left, right);
}

}  // namespace quillon::platform
