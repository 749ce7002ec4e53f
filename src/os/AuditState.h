#pragma once

#include <cstdint>
#include <map>
#include <mutex>

#include "os/DeferredLog.h"
#include "platform/AuditApi.h"
#include "quillon/UniqueIdentifier.h"

namespace quillon {

struct SubcategoryReference {
    std::uint32_t referenceCount = 0;
    bool enabledByProxy = false;
};

/// What SystemAuditProxy keeps for the process's life. Guarded by m_auditSync, as every
/// change of the policy is.
struct AuditState {
    std::mutex m_auditSync;
    bool m_isInitialized = false;
    bool m_isAvailable = false;
    std::map<UniqueIdentifier, SubcategoryReference> m_auditReferenceCounts;
    platform::AuditEvent m_policyChangeNotificationHandle;
    platform::AuditWait m_policyChangeWaitHandle;

    platform::AuditQuerySystemPolicy AuditQuerySystemPolicy = nullptr;
    platform::AuditSetSystemPolicy AuditSetSystemPolicy = nullptr;
    platform::AuditFree AuditFree = nullptr;

    /// Of the operation that has the lock.
    DeferredLog* log = nullptr;

    /// Never destroyed: a callback may come while the process ends.
    static AuditState& Get();
    /// For tests: lets the functions be bound anew, while nothing is held.
    void ForgetFunctions();
};

/// One operation: has the lock, and writes what it logged once the lock is released.
class AuditOperation {
public:
    AuditOperation();
    ~AuditOperation();
    AuditOperation(const AuditOperation&) = delete;
    AuditOperation& operator=(const AuditOperation&) = delete;

    DeferredLog& Log() { return m_log; }

private:
    DeferredLog m_log;
    std::unique_lock<std::mutex> m_lock;
};

/// Has SeSecurityPrivilege switched on for its life, in the calling thread's token or else the
/// process's.
class SecurityPrivilegeScope {
public:
    explicit SecurityPrivilegeScope(ICLogger& log);
    ~SecurityPrivilegeScope();
    SecurityPrivilegeScope(const SecurityPrivilegeScope&) = delete;
    SecurityPrivilegeScope& operator=(const SecurityPrivilegeScope&) = delete;

    bool IsActive() const { return m_isActive; }

private:
    void OpenToken();

    ICLogger& m_log;
    platform::AuditToken m_token;
    bool m_isActive = false;
};

}  // namespace quillon
