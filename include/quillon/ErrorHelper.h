#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/IAgentConfiguration.h"
#include "quillon/InvocationResult.h"

namespace quillon {

class QUILLON_API ErrorHelper {
public:
    ErrorHelper() = delete;

    /// As StringUtils::GetErrorAsString().
    static std::string GetErrorMessage(int code);
    /// The text of the thread's last error, and code 3.
    static void SetInvocationResultFromLastError(InvocationResult& result);
    /// Whether an error of a certificate's chain (CERT_TRUST_STATUS.dwErrorStatus) may be
    /// ignored, as soft checks allow for revocation that is offline (0x1000000) or unknown (0x40).
    /// Logged at Debug.
    static bool AllowTrustError(IAgentConfiguration::CRLChecks crlChecks, unsigned long trustStatus);
};

}  // namespace quillon
