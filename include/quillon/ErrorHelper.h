#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "quillon/Export.h"
#include "quillon/IAgentConfiguration.h"
#include "quillon/InvocationResult.h"

namespace quillon {

/// Turns errors of the system into results of methods. Thread-safe.
class QUILLON_API ErrorHelper {
public:
    ErrorHelper() = delete;

    /// Returns the text of a Windows error code, as StringUtils::GetErrorAsString() does.
    static std::string GetErrorMessage(int code);
    /// Returns what an exception says; nothing when its what() is null, as that of a module's exception may
    /// be. The text belongs to the exception. Needs no memory.
    static std::string_view GetExceptionMessage(const std::exception& error);
    /// Returns the thread's last error, a Windows code on both systems (2: there is no such file), and
    /// leaves it as it is; 0 when the last operation that sets it has not failed. Call it before anything
    /// else that may change the last error, a log entry included.
    static int GetLastErrorCode();
    /// Sets the message to the text of the thread's last error, and the code to 3. Call it before
    /// anything else that may change the last error, a log entry included.
    static void SetInvocationResultFromLastError(InvocationResult& result);
    /// Returns whether the error of a certificate's chain (CERT_TRUST_STATUS.dwErrorStatus) may be
    /// ignored. Soft checks allow exactly one of CERT_TRUST_IS_OFFLINE_REVOCATION (0x1000000) and
    /// CERT_TRUST_REVOCATION_STATUS_UNKNOWN (0x40), with no other bit, and log that at Debug.
    static bool AllowTrustError(IAgentConfiguration::CRLChecks crlChecks, unsigned long trustStatus);
};

}  // namespace quillon
