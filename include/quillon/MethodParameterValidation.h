#pragma once

#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"

namespace quillon {

/// Checks parameter values after ParameterBinder has filled the variables. A check that passes
/// returns true and leaves the result as it was; one that fails sets result code 2 and a message that
/// names the parameter, and returns false. Texts are UTF-8; a null name counts as the empty one.
/// Nothing is thrown; nothing is logged unless an operation says so. Thread-safe.
///
/// @code
/// void Ping(const std::string& host, long long count, InvocationResult& result) {
///     if (!MethodParameterValidation::NotEmpty("host", host, result)) return;
///     if (!MethodParameterValidation::InRange("count", count, 1, 100, result)) return;
///     result.resultTable.AddRow(VariantList(Variant("Host", host), Variant("Count", count)));
/// }
/// @endcode
class QUILLON_API MethodParameterValidation {
public:
    MethodParameterValidation() = delete;

    /// Passes when the value has no backslash. The name of a parameter is used in the message only,
    /// here and below.
    [[nodiscard]] static bool IsName(const char* name, const std::string& value, InvocationResult& result);
    /// Passes when the value has a backslash and, unless it is allowed, no drive specifier (a colon
    /// as its second code unit). Whether the path exists is not asked.
    [[nodiscard]] static bool IsPath(const char* name, const std::string& value, InvocationResult& result,
                                     bool allowDriveSpecifier);
    /// Passes when exactly one of the two values is empty. `secondIsDeprecated` adds to the message
    /// that the second name is deprecated.
    [[nodiscard]] static bool MutuallyExclusive(const char* name1, const char* name2,
                                                const std::string& value1, const std::string& value2,
                                                bool secondIsDeprecated, InvocationResult& result);
    /// Passes when the value has at least one byte.
    [[nodiscard]] static bool NotEmpty(const char* name, const std::string& value, InvocationResult& result);
    /// Passes an http or https URL with a host and a port that is not 0, as Url does.
    [[nodiscard]] static bool ValidUrl(const char* name, const std::string& value, InvocationResult& result);
    /// Passes domain\user or user@machine with both parts not empty. Whether there is such an
    /// account is not asked.
    [[nodiscard]] static bool ValidateAsUserParameter(const std::string& value, InvocationResult& result);
    /// Passes when low <= value <= high.
    [[nodiscard]] static bool InRange(const char* name, long long value, long long low, long long high,
                                      InvocationResult& result);
    /// Passes when the value is one of the texts, compared byte by byte.
    [[nodiscard]] static bool OneOf(const char* name, const std::string& value,
                                    const std::vector<std::string>& allowed, InvocationResult& result);
    /// Gives an empty value the deprecated parameter's, and logs one Warn entry "Parameter name '%s'
    /// is deprecated; use '%s' instead", also when that one is empty too.
    static void UseNonDeprecated(const char* name, const char* deprecatedName, std::string& value,
                                 const std::string& deprecatedValue);
};

}  // namespace quillon
