#include "quillon/MethodParameterValidation.h"

#include <algorithm>

#include "base/TextOrEmpty.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/Url.h"
#include "quillon/UserUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {
namespace {

bool RejectParameter(InvocationResult& result, std::string message) {
    result.resultCode = InvocationResult::kBadParameter;
    result.errorMessage = std::move(message);
    return false;
}

std::string Text(const char* name) { return std::string(base::TextOrEmpty(name)); }
std::string Quoted(const std::string& text) { return "'" + text + "'"; }
std::string Quoted(const char* name) { return Quoted(Text(name)); }

bool HasDriveSpecifier(const std::string& path) { return path.size() >= 2 && path[1] == ':'; }

std::string WithValue(const char* name, const std::string& value) {
    return "the " + Quoted(name) + " parameter with value " + Quoted(value);
}

}  // namespace

bool MethodParameterValidation::IsName(const char* name, const std::string& value, InvocationResult& result) {
    if (value.find('\\') == std::string::npos) return true;
    return RejectParameter(
        result, "A name is required, not an absolute path, for the " + Quoted(name) + " parameter");
}

bool MethodParameterValidation::IsPath(const char* name, const std::string& value, InvocationResult& result,
                                       bool allowDriveSpecifier) {
    if (value.find('\\') == std::string::npos) {
        return RejectParameter(result,
                               "An absolute path (suitable for the platform) is required, not a name, for " +
                                   WithValue(name, value));
    }
    if (allowDriveSpecifier || !HasDriveSpecifier(value)) return true;
    return RejectParameter(result,
                           "A path without a drive specifier is required, for " + WithValue(name, value));
}

bool MethodParameterValidation::MutuallyExclusive(const char* name1, const char* name2,
                                                  const std::string& value1, const std::string& value2,
                                                  bool secondIsDeprecated, InvocationResult& result) {
    if (value1.empty() != value2.empty()) return true;
    std::string message = value1.empty()
                              ? "One and only one of " + Quoted(name1) + " or " + Quoted(name2) +
                                    " must be specified and cannot be empty"
                              : Quoted(name1) + " and " + Quoted(name2) + " parameters cannot both be used";
    if (secondIsDeprecated) message += "; " + Quoted(name2) + " is deprecated";
    return RejectParameter(result, std::move(message));
}

bool MethodParameterValidation::NotEmpty(const char* name, const std::string& value,
                                         InvocationResult& result) {
    return !value.empty() || RejectParameter(result, Quoted(name) + " parameter cannot be empty");
}

bool MethodParameterValidation::ValidUrl(const char* name, const std::string& value,
                                         InvocationResult& result) {
    return Url::Parse(value).IsValid() ||
           RejectParameter(result, Text(name) + " value " + Quoted(value) + " is not valid");
}

bool MethodParameterValidation::ValidateAsUserParameter(const std::string& value, InvocationResult& result) {
    const auto [isDownLevel, netbiosDomain, account] = UserUtils::SplitDownLevelLogonName(value);
    if (isDownLevel && (netbiosDomain.empty() || account.empty())) {
        return RejectParameter(
            result, "A down-level logon name must be formatted as 'netbios-domain\\user-account-name'");
    }
    const auto [isPrincipal, user, domain] = UserUtils::SplitUserPrincipalName(value);
    if (isPrincipal && (user.empty() || domain.empty())) {
        return RejectParameter(
            result, "A user principal name must be formatted as 'user-account-name@machine-or-domain'");
    }
    return isDownLevel || isPrincipal ||
           RejectParameter(result,
                           "A user name must be formatted as 'user-account-name@machine-or-domain' or "
                           "'netbios-domain\\user-account-name'");
}

bool MethodParameterValidation::InRange(const char* name, long long value, long long low, long long high,
                                        InvocationResult& result) {
    if (low <= value && value <= high) return true;
    return RejectParameter(result, Quoted(name) + " parameter must be between " + std::to_string(low) +
                                       " and " + std::to_string(high) + ", not " + std::to_string(value));
}

bool MethodParameterValidation::OneOf(const char* name, const std::string& value,
                                      const std::vector<std::string>& allowed, InvocationResult& result) {
    if (std::find(allowed.begin(), allowed.end(), value) != allowed.end()) return true;
    std::string message = Quoted(name) + " parameter must be one of ";
    for (const std::string& text : allowed) message += Quoted(text) + ", ";
    return RejectParameter(result, message + "not " + Quoted(value));
}

void MethodParameterValidation::UseNonDeprecated(const char* name, const char* deprecatedName,
                                                 std::string& value, const std::string& deprecatedValue) {
    if (!value.empty()) return;
    if (ICLogger* logger = detail::RegisteredLoggerIfAny()) {
        logger->Warn("Parameter name '%s' is deprecated; use '%s' instead",
                     LogText::OneLine(Text(deprecatedName)).c_str(), LogText::OneLine(Text(name)).c_str());
    }
    value = deprecatedValue;
}

}  // namespace quillon
