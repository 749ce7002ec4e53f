#include "os/AuditState.h"
#include "platform/ErrorText.h"
#include "quillon/SystemAuditProxy.h"

namespace quillon {

namespace {

using platform::Audit;
using platform::AuditEvent;
using platform::AuditWait;

constexpr const char* kIndent = " ->";

/// Waits for the event on a thread of the system. Returns no wait when there is no event or the system
/// refuses.
AuditWait RegisterWait(const AuditEvent& event, platform::AuditCalls::WaitCallback callback) {
    HANDLE wait = nullptr;
    if (!event || !Audit().registerWait(wait, event.Get(), callback)) return AuditWait();
    return AuditWait(wait);
}

}  // namespace

void SystemAuditProxy::StartMonitoringAuditPolicyChanges() {
    AuditState& state = AuditState::Get();
    HANDLE made = Audit().makeEvent();
    AuditEvent event(made != nullptr ? made : platform::AuditEventTraits::Invalid());
    AuditWait wait = RegisterWait(event, &AuditPolicyChangedCallback);
    if (!wait) {
        state.log->Warn("Cannot monitor for changes to audit policy - failed to register wait on handle");
        return;
    }
    if (!Audit().registerPolicyChange(event.Get())) {
        state.log->Warn(
            "Cannot monitor for changes to audit policy - failed to register for change notifications");
        wait.Reset();  // before its event
        return;
    }
    state.m_policyChangeNotificationHandle = std::move(event);
    state.m_policyChangeWaitHandle = std::move(wait);
    state.log->Debug("Started to monitor for audit policy change notifications");
}

/// A callback may be waiting for the lock that the caller holds. It is not waited for, as that would be a
/// deadlock: it will find nothing held, or what was held after this, and both are right.
void SystemAuditProxy::StopMonitoringAuditPolicyChanges() {
    AuditState& state = AuditState::Get();
    if (state.m_policyChangeNotificationHandle)
        Audit().unregisterPolicyChange(state.m_policyChangeNotificationHandle.Get());
    state.m_policyChangeWaitHandle.Reset();
    state.m_policyChangeNotificationHandle.Reset();
    state.log->Debug("Stopped monitoring for audit policy change notifications");
}

/// Runs on a thread of the system, which no exception may reach.
void SystemAuditProxy::AuditPolicyChangedCallback(void*, unsigned char timedOut) {
    if (timedOut != 0) return;
    try {
        AuditOperation operation;
        operation.Log().Info("Detected change of system audit policy");
        ReaffirmAuditPolicy();
    } catch (...) {  // no memory for the report
    }
}

void SystemAuditProxy::ReaffirmAuditPolicy() {
    AuditState& state = AuditState::Get();
    const SecurityPrivilegeScope scope(*state.log);
    if (!scope.IsActive()) return;
    int reapplied = 0;
    for (auto& [id, reference] : state.m_auditReferenceCounts) {
        state.log->Debug("%s Reaffirming audit policy for subcategory %s (have %u references)", kIndent,
                         id.ToString().c_str(), reference.referenceCount);
        unsigned long bits = 0;
        if (!GetAuditPolicyState(id.ToMsGuid(), &bits, state.log)) continue;
        if ((bits & platform::kAuditBoth) == platform::kAuditBoth) continue;
        state.log->Debug("%s Reapplying success + failure audit policy for subcategory %s", kIndent,
                         id.ToString().c_str());
        if (!reference.enabledByProxy) {
            reference.bitsBefore = static_cast<std::uint32_t>(bits);
            reference.enabledByProxy = true;
            WriteRecord();  // before, as when it is enabled
        }
        SetAuditPolicyState(id.ToMsGuid(), platform::kAuditBoth, state.log);
        ++reapplied;
    }
    if (reapplied > 0) {
        state.log->Info(
            "Re-applied success + failure auditing on %d subcategories (which had been disabled by local or "
            "group policy refresh)",
            reapplied);
    }
}

}  // namespace quillon
