#include "quillon/ErrorHelper.h"

#include "base/TextOrEmpty.h"
#include "platform/ErrorText.h"
#include "quillon/ICLogger.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr unsigned long kOfflineRevocation = 0x1000000;
constexpr unsigned long kRevocationStatusUnknown = 0x40;

}  // namespace

std::string ErrorHelper::GetErrorMessage(int code) { return StringUtils::GetErrorAsString(code); }

std::string_view ErrorHelper::GetExceptionMessage(const std::exception& error) {
    return base::TextOrEmpty(error.what());
}

int ErrorHelper::GetLastErrorCode() { return static_cast<int>(platform::LastError()); }

void ErrorHelper::SetInvocationResultFromLastError(InvocationResult& result) {
    result.errorMessage = GetErrorMessage(GetLastErrorCode());
    result.resultCode = InvocationResult::kSystemFailure;
}

bool ErrorHelper::AllowTrustError(IAgentConfiguration::CRLChecks crlChecks, unsigned long trustStatus) {
    const bool isOffline = trustStatus == kOfflineRevocation;
    if (crlChecks != IAgentConfiguration::Soft || (!isOffline && trustStatus != kRevocationStatusUnknown))
        return false;
    if (ICLogger* const logger = detail::RegisteredLoggerIfAny()) {
        logger->Debug(
            "%s %s error ignored as soft CRLChecks are configured", " ->",
            isOffline ? "CERT_TRUST_IS_OFFLINE_REVOCATION" : "CERT_TRUST_REVOCATION_STATUS_UNKNOWN");
    }
    return true;
}

}  // namespace quillon
