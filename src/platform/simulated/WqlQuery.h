#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Wbem.h"

namespace quillon::platform::simulated {

/// A WQL query: SELECT * or a list of properties, FROM a class, and a WHERE of
/// comparisons (=, <>, !=, <, <=, >, >=, LIKE, IS NULL, IS NOT NULL), AND, OR, NOT and
/// parentheses. Keywords and names have no case. A query is cheap to match and is
/// matched on any number of threads.
class WqlQuery {
public:
    /// A property's value; null when the object has no such property.
    using Property = std::function<const VARIANT*(std::wstring_view name)>;

    /// 0, WBEM_E_INVALID_QUERY, or WBEM_E_OUT_OF_MEMORY. Nothing in the text is deep
    /// or long enough to overflow a stack.
    HRESULT Parse(std::wstring_view text);

    const std::wstring& ClassName() const { return m_className; }
    /// None when all are wanted.
    const std::vector<std::wstring>& Properties() const { return m_properties; }
    /// The names that the condition reads.
    std::vector<std::wstring> ConditionProperties() const;
    bool Matches(const Property& property) const;

private:
    /// One step of the condition, in postfix order.
    struct Step {
        enum class Kind { Compare, IsNull, IsNotNull, And, Or, Not };
        enum class Operator { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual, Like };
        Kind kind;
        Operator op = Operator::Equal;
        std::wstring property;
        _variant_t constant;  // VT_BSTR, VT_I8, VT_R8, VT_BOOL or VT_NULL
    };
    friend class WqlParser;

    std::wstring m_className;
    std::vector<std::wstring> m_properties;
    std::vector<Step> m_condition;
};

}  // namespace quillon::platform::simulated
