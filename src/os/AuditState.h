#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "os/AuditRecord.h"
#include "os/DeferredLog.h"
#include "platform/AuditApi.h"
#include "quillon/UniqueIdentifier.h"

namespace quillon {

struct SubcategoryReference {
    std::uint32_t referenceCount = 0;
    bool enabledByProxy = false;
    std::uint32_t bitsBefore = 0;  // when the proxy has switched it on
};

/// Holds the state of SystemAuditProxy for the life of the process. m_auditSync guards it and is held
/// over every change of the policy, so that two holders cannot switch a sub-category on and off at once.
struct AuditState {
    std::mutex m_auditSync;
    bool m_isInitialized = false;
    bool m_isAvailable = false;
    std::map<UniqueIdentifier, SubcategoryReference> m_auditReferenceCounts;
    platform::AuditEvent m_policyChangeNotificationHandle;
    platform::AuditWait m_policyChangeWaitHandle;

    /// Where it is written down what is switched on; empty: nowhere.
    std::string m_recordPath;
    /// What could not be switched off.
    std::vector<AuditRecordEntry> m_leftOn;

    platform::AuditQuerySystemPolicy AuditQuerySystemPolicy = nullptr;
    platform::AuditSetSystemPolicy AuditSetSystemPolicy = nullptr;
    platform::AuditFree AuditFree = nullptr;

    /// Collects the entries of the operation that holds the lock; null while nobody does.
    DeferredLog* log = nullptr;

    /// Sets bits of a sub-category; false on failure, see LastError().
    bool SetBits(const GUID& subcategory, std::uint32_t bits) const;
    /// Sets the bits that there were before; the system adds bits to those that are set.
    bool RestoreBits(const GUID& subcategory, std::uint32_t bits) const;

    /// Never destroyed: a callback may come while the process ends.
    static AuditState& Get();
    /// Lets a test bind the functions anew, while nothing is held.
    void ForgetFunctions();
};

/// Holds the lock for one operation and collects what it logs. The destructor releases the lock first and
/// writes the entries then: a logger may roll the log over, and the host's services that this asks may
/// call the proxy.
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

/// Switches SeSecurityPrivilege on for its life, in the calling thread's token or, without one, in the
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
