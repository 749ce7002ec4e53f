#include "simulation/wql/WqlQuery.h"

#include <algorithm>
#include <compare>
#include <optional>
#include <string>

#include "base/Characters.h"
#include "platform/TextApi.h"
#include "platform/ole/VariantNumber.h"
#include "simulation/wql/WqlDateTime.h"
#include "simulation/wql/WqlPattern.h"

namespace quillon::simulation {

namespace {

/// The order matters: AND is the smaller of two values, OR the larger, NOT the difference to True.
enum Truth : char { False = 0, Unknown = 1, True = 2 };

Truth TruthOf(bool value) { return value ? True : False; }

Truth Negated(char truth) { return static_cast<Truth>(True - truth); }

bool IsNull(const VARIANT* value) {
    return value == nullptr || value->vt == VT_NULL || value->vt == VT_EMPTY;
}

/// No array, object or NULL.
bool IsScalar(const VARIANT* value) {
    return !IsNull(value) && (value->vt & VT_ARRAY) == 0 && value->vt != VT_UNKNOWN &&
           value->vt != VT_DISPATCH;
}

std::optional<bool> BoolOf(const VARIANT& value) {
    if (value.vt == VT_BSTR &&
        base::EqualIgnoringCase(platform::BstrText(value.bstrVal), std::wstring_view(L"TRUE")))
        return true;
    if (value.vt == VT_BSTR &&
        base::EqualIgnoringCase(platform::BstrText(value.bstrVal), std::wstring_view(L"FALSE")))
        return false;
    const auto number = platform::VariantNumberOf(value);
    return number ? std::optional(platform::CompareNumbers(*number, 0LL) != 0) : std::nullopt;
}

std::partial_ordering CompareTexts(std::wstring_view left, std::wstring_view right) {
    if (const auto a = InstantOf(left)) {
        if (const auto b = InstantOf(right)) return *a <=> *b;
    }
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        const auto order = base::Lower(left[i]) <=> base::Lower(right[i]);
        if (order != 0) return order;
    }
    return left.size() <=> right.size();
}

/// Neither is NULL, an array or an object.
std::partial_ordering CompareValues(const VARIANT& left, const VARIANT& right) {
    if (left.vt == VT_BOOL || right.vt == VT_BOOL) {
        const auto a = BoolOf(left);
        const auto b = BoolOf(right);
        return a && b ? std::partial_ordering(*a <=> *b) : std::partial_ordering::unordered;
    }
    if (left.vt == VT_BSTR && right.vt == VT_BSTR)
        return CompareTexts(platform::BstrText(left.bstrVal), platform::BstrText(right.bstrVal));
    const auto a = platform::VariantNumberOf(left);
    const auto b = platform::VariantNumberOf(right);
    return a && b ? platform::CompareNumbers(*a, *b) : std::partial_ordering::unordered;
}

}  // namespace

std::vector<std::wstring> WqlQuery::ConditionProperties() const {
    std::vector<std::wstring> names;
    for (const Step& step : m_condition) {
        if (!step.property.empty()) names.push_back(step.property);
    }
    return names;
}

bool WqlQuery::Step::IsMetBy(const VARIANT& value) const {
    if (op == Operator::Like)
        return MatchesLike(platform::BstrText(value.bstrVal), platform::BstrText(constant.bstrVal));
    const std::partial_ordering order = CompareValues(value, constant);
    switch (op) {
        case Operator::Equal:
            return order == 0;
        case Operator::NotEqual:
            return order != 0;
        case Operator::Less:
            return order < 0;
        case Operator::LessOrEqual:
            return order <= 0;
        case Operator::Greater:
            return order > 0;
        default:
            return order >= 0;
    }
}

char WqlQuery::Step::TruthFor(const VARIANT* value) const {
    if (kind == Kind::IsNull) return TruthOf(IsNull(value));
    if (kind == Kind::IsNotNull) return TruthOf(!IsNull(value));
    if (!IsScalar(value) || IsNull(&constant)) return Unknown;
    if (op == Operator::Like && value->vt != VT_BSTR) return Unknown;
    return TruthOf(IsMetBy(*value));
}

bool WqlQuery::Matches(const Property& property) const {
    if (m_condition.empty()) return true;
    std::string stack;  // a text, since a short one takes no memory
    for (const Step& step : m_condition) {
        if (step.kind == Step::Kind::Not) {
            stack.back() = Negated(stack.back());
        } else if (step.kind == Step::Kind::And || step.kind == Step::Kind::Or) {
            const char last = stack.back();
            stack.pop_back();
            const bool isAnd = step.kind == Step::Kind::And;
            stack.back() = isAnd ? std::min(stack.back(), last) : std::max(stack.back(), last);
        } else {
            stack.push_back(step.TruthFor(property(step.property)));
        }
    }
    return stack.back() == True;
}

}  // namespace quillon::simulation
