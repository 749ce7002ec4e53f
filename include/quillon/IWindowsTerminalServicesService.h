#pragma once

#include <string>

#include "quillon/Export.h"

namespace quillon {

/// The host's knowledge of sessions. Any thread.
class QUILLON_API IWindowsTerminalServicesService {
public:
    static const char* __InterfaceId() { return "VntItf_IWindowsTerminalServicesService"; }

    virtual ~IWindowsTerminalServicesService();

    /// "DOMAIN\user" of a session; may throw.
    virtual std::wstring GetDomainUserForSession(unsigned long sessionId) = 0;
};

}  // namespace quillon
