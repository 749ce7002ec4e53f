#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Wbem.h"

namespace quillon::simulation {

/// A WQL query: SELECT * or a list of properties, FROM a class, and a WHERE of
/// comparisons (=, <>, !=, <, <=, >, >=, LIKE, IS NULL, IS NOT NULL), AND, OR, NOT and
/// parentheses. Keywords and names have no case; a comparison may have its constant
/// first. A query is cheap to match and is matched on any number of threads.
///
/// Texts are compared without regard to ASCII case, two date-times by the instant that
/// they mean, numbers by value: a text (as which 64-bit integers come) is read as a number when it meets one.
/// What cannot be compared differs, and is neither less nor greater. A comparison with
/// NULL, an array or an object is neither true nor false, and so is its NOT; "= NULL"
/// and "<> NULL" are IS NULL and IS NOT NULL.
class WqlQuery {
public:
    /// A property's value; null when the object has no such property.
    using Property = std::function<const VARIANT*(std::wstring_view name)>;

    /// 0, WBEM_E_INVALID_QUERY, WBEM_E_NOT_SUPPORTED (0x8004100C) for ASSOCIATORS OF,
    /// REFERENCES OF and ISA, or WBEM_E_OUT_OF_MEMORY, and the query is empty then.
    /// Refused are also a zero anywhere, and in a literal a '\' in front of anything
    /// but a quote or itself. Linear; no nesting overflows a stack.
    HRESULT Parse(std::wstring_view text);

    const std::wstring& ClassName() const { return m_className; }
    /// Returns the properties that the query names; an empty list means all.
    const std::vector<std::wstring>& Properties() const { return m_properties; }
    /// The names that the condition reads.
    std::vector<std::wstring> ConditionProperties() const;
    bool Matches(const Property& property) const;

private:
    // Conditions have SQL's three values: a comparison with NULL is neither true nor false but unknown;
    // NOT of unknown is unknown, AND is false as soon as one side is false, OR true as soon as one side is
    // true. An object matches only when the whole condition is true.

    /// One step of the condition, in postfix order.
    struct Step {
        enum class Kind { Compare, IsNull, IsNotNull, And, Or, Not };
        enum class Operator { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual, Like };

        /// Compares a property's value, which may be null: 0 is false, 1 unknown, 2 true.
        [[nodiscard]] char TruthFor(const VARIANT* value) const;
        [[nodiscard]] bool IsMetBy(const VARIANT& value) const;

        Kind kind = Kind::Compare;
        Operator op = Operator::Equal;
        std::wstring property;
        _variant_t constant;  // VT_BSTR, VT_I8, VT_UI8, VT_R8, VT_BOOL or VT_NULL
    };
    friend class WqlParser;

    std::wstring m_className;
    std::vector<std::wstring> m_properties;
    std::vector<Step> m_condition;
};

}  // namespace quillon::simulation
