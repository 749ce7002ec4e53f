#pragma once

#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Tells which user a session belongs to. The host implements it and registers it with ServiceLocator;
/// any thread may call it.
class QUILLON_API IWindowsTerminalServicesService {
public:
    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IWindowsTerminalServicesService"; }

    virtual ~IWindowsTerminalServicesService();

    /// Returns "DOMAIN\user", in UTF-16, of the session of that identifier. A failure is thrown as a
    /// std::exception, which OperatingSystemUserSessionNotification catches.
    virtual std::wstring GetDomainUserForSession(unsigned long sessionId) = 0;
};

}  // namespace quillon
