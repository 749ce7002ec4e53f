#include "quillon/SystemAuditProxy.h"

#include <new>

#include "os/AuditState.h"
#include "os/EntryPointBinder.h"
#include "os/HolderCount.h"
#include "platform/ErrorText.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using platform::kAuditBoth;

/// Binds the functions and returns why that failed, or the empty text.
std::string BindFunctions(AuditState& state) {
    if (!IsAtLeastVersion60()) return kTooOldSystem;
    const HINSTANCE module = platform::Procedures().loadedModule("Advapi32.dll");
    if (module == nullptr) return "Failed to get a reference to advapi32.dll";
    return EntryPointBinder(module)
        .Bind("AuditQuerySystemPolicy", state.AuditQuerySystemPolicy)
        .Bind("AuditSetSystemPolicy", state.AuditSetSystemPolicy)
        .Bind("AuditFree", state.AuditFree)
        .Reason();
}

bool IncludesBoth(unsigned long bits) { return (bits & kAuditBoth) == kAuditBoth; }

/// Switches auditing off again; the caller knows that the proxy has switched it on.
bool ClearBits(const UniqueIdentifier& subcategory, ICLogger& log) {
    const SecurityPrivilegeScope scope(log);
    if (!scope.IsActive()) return false;
    if (AuditState::Get().SetBits(subcategory.ToMsGuid(), platform::kAuditNone)) {
        log.Debug("Disabled success + failure auditing on audit sub-category '%s'",
                  subcategory.ToString().c_str());
        return true;
    }
    log.Error("Failed to disable success + failure auditing on audit sub-category '%s' - %s",
              subcategory.ToString().c_str(), StringUtils::GetLastErrorAsString().c_str());
    return false;
}

/// The same; without the memory for it auditing counts as left on.
bool TryClearBits(const UniqueIdentifier& subcategory, ICLogger& log) {
    try {
        return ClearBits(subcategory, log);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// Without the memory for it only the record tells.
void AskForReview(ICLogger& log) {
    try {
        log.Warn("The Agent enabled extended security auditing on this machine, but could not disable it");
        log.Warn("The audit configuration policy for this machine may have to be reviewed with auditpol.exe");
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

bool SystemAuditProxy::EnsureSystemAuditAvailable() {
    AuditOperation operation;
    AuditState& state = AuditState::Get();
    if (state.m_isInitialized) return state.m_isAvailable;
    const std::string reason = BindFunctions(state);
    state.m_isAvailable = reason.empty();
    if (state.m_isAvailable) {
        operation.Log().Debug(
            "Initialized SystemAuditProxy - system audit policy functionality is available");
    } else {
        operation.Log().Warn("%s - system audit policy functionality will not be available", reason.c_str());
    }
    state.m_isInitialized = true;
    return state.m_isAvailable;
}

bool SystemAuditProxy::EnableAuditLogSubCategory(const UniqueIdentifier& subcategory) {
    if (!EnsureSystemAuditAvailable()) return false;
    AuditOperation operation;
    auto& held = AuditState::Get().m_auditReferenceCounts;
    if (const auto found = held.find(subcategory); found != held.end())
        return AddHolder(found->second.referenceCount);

    const SecurityPrivilegeScope scope(operation.Log());
    const GUID guid = subcategory.ToMsGuid();
    unsigned long bits = 0;
    if (!scope.IsActive() || !GetAuditPolicyState(guid, &bits, &operation.Log())) return false;
    const bool wasEmpty = held.empty();
    const bool isNew = !IncludesBoth(bits);
    const auto bitsBefore = static_cast<std::uint32_t>(bits);
    held[subcategory] = {1, isNew, bitsBefore};
    try {
        if (isNew) WriteRecord();  // before, so that a kill in between leaves nothing switched on for ever
        if (isNew && !SetAuditPolicyState(guid, kAuditBoth, &operation.Log())) {
            held.erase(subcategory);
            WriteRecord();
            return false;
        }
        if (wasEmpty) StartMonitoringAuditPolicyChanges();
    } catch (...) {  // no memory: the caller has no holder that would release it
        held.erase(subcategory);
        if (isNew) AuditState::Get().RestoreBits(guid, bitsBefore);
        throw;
    }
    return true;
}

void SystemAuditProxy::DisableAuditLogSubCategory(const UniqueIdentifier& subcategory) {
    if (!EnsureSystemAuditAvailable()) return;
    AuditOperation operation;
    auto& held = AuditState::Get().m_auditReferenceCounts;
    const auto found = held.find(subcategory);
    if (found == held.end() || --found->second.referenceCount > 0) return;

    const auto [count, enabledByProxy, bitsBefore] = found->second;
    held.erase(found);
    const bool isLeftOn = enabledByProxy && !TryClearBits(subcategory, operation.Log());
    if (isLeftOn) AskForReview(operation.Log());
    if (held.empty()) StopMonitoringAuditPolicyChanges();
    if (!enabledByProxy) return;
    // Without the memory for what follows the record keeps what it says.
    auto& leftOn = AuditState::Get().m_leftOn;
    std::erase_if(leftOn, [&](const auto& entry) { return entry.id == subcategory; });
    if (isLeftOn) leftOn.push_back({subcategory, bitsBefore});
    WriteRecord();
}

bool SystemAuditProxy::GetAuditPolicyState(const GUID& subcategory, unsigned long* state, ICLogger* logger) {
    const AuditState& proxy = AuditState::Get();
    platform::AuditPolicyRecord* record = nullptr;
    if (proxy.AuditQuerySystemPolicy(&subcategory, 1, &record) == 0) {
        logger->Error("Failed to query system audit policy - %s",
                      StringUtils::GetLastErrorAsString().c_str());
        return false;
    }
    *state = record->auditing;
    proxy.AuditFree(record);
    return true;
}

bool SystemAuditProxy::SetAuditPolicyState(const GUID& subcategory, const unsigned long& state,
                                           ICLogger* logger) {
    if (AuditState::Get().SetBits(subcategory, static_cast<std::uint32_t>(state))) {
        logger->Debug("Enabled success + failure auditing on audit sub-category '%s'",
                      GUIDToString(subcategory).c_str());
        return true;
    }
    const std::string reason = StringUtils::GetLastErrorAsString();
    logger->Error("Failed to enable success + failure auditing on audit sub-category '%s' - %s",
                  GUIDToString(subcategory).c_str(), reason.c_str());
    return false;
}

std::string SystemAuditProxy::GUIDToString(const GUID& guid) {
    return '{' + StringUtils::ToUppercase(UniqueIdentifier(guid).ToString()) + '}';
}

}  // namespace quillon
