#pragma once

#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"

namespace quillon {

/// Checks of parameter values after ParameterBinder has filled them. Each passes,
/// or sets result code 2 and a message that names the parameter, and returns
/// false. Nothing is thrown; nothing is logged unless an operation says so.
class QUILLON_API MethodParameterValidation {
public:
    MethodParameterValidation() = delete;

    /// No backslash.
    static bool IsName(const char* name, const std::string& value, InvocationResult& result);
    /// A backslash, and unless allowed no drive specifier.
    static bool IsPath(const char* name, const std::string& value, InvocationResult& result,
                       bool allowDriveSpecifier);
    /// Exactly one of the two values is not empty.
    static bool MutuallyExclusive(const char* name1, const char* name2, const std::string& value1,
                                  const std::string& value2, bool secondIsDeprecated,
                                  InvocationResult& result);
    static bool NotEmpty(const char* name, const std::string& value, InvocationResult& result);
    /// An http or https URL with a host and a port that is not 0.
    static bool ValidUrl(const char* name, const std::string& value, InvocationResult& result);
    /// domain\user or user@machine.
    static bool ValidateAsUserParameter(const std::string& value, InvocationResult& result);
    /// low <= value <= high.
    static bool InRange(const char* name, long long value, long long low, long long high,
                        InvocationResult& result);
    /// One of the texts, byte by byte.
    static bool OneOf(const char* name, const std::string& value, const std::vector<std::string>& allowed,
                      InvocationResult& result);
    /// An empty value takes the deprecated parameter's, with a Warn entry.
    static void UseNonDeprecated(const char* name, const char* deprecatedName, std::string& value,
                                 const std::string& deprecatedValue);
};

}  // namespace quillon
