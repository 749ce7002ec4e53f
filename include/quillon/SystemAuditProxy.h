#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/UniqueIdentifier.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

class ICLogger;

/// Turns success and failure auditing of sub-categories of the system's audit policy on
/// for as long as somebody holds them, and puts it back on when policy turns it off meanwhile. Any
/// thread. Everything is logged by the registered logger. Without the system's audit
/// functions nothing can be held, which is logged once. An operation logs when it is
/// done, with no lock held, so that a logger may come back here.
class QUILLON_API SystemAuditProxy {
public:
    SystemAuditProxy() = delete;

    /// One more holder; true when the sub-category is audited. False, too, for one more than 2^32 - 1.
    static bool EnableAuditLogSubCategory(const UniqueIdentifier& subcategory);
    /// One holder less. The last one turns auditing off if the proxy had turned it on.
    static void DisableAuditLogSubCategory(const UniqueIdentifier& subcategory);

private:
    static bool EnsureSystemAuditAvailable();
    static void AuditPolicyChangedCallback(void* context, unsigned char timedOut);
    static void ReaffirmAuditPolicy();
    static void StartMonitoringAuditPolicyChanges();
    static void StopMonitoringAuditPolicyChanges();
    static bool GetAuditPolicyState(const GUID& subcategory, unsigned long* state, ICLogger* logger);
    static bool SetAuditPolicyState(const GUID& subcategory, const unsigned long& state, ICLogger* logger);
    static std::string GUIDToString(const GUID& guid);
};

}  // namespace quillon
