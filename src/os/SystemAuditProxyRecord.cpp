#include <utility>

#include "os/AuditState.h"
#include "quillon/StringUtils.h"
#include "quillon/SystemAuditProxy.h"

namespace quillon {

void SystemAuditProxy::KeepRecordIn(const std::string& path) {
    const bool isAvailable = EnsureSystemAuditAvailable();
    AuditOperation operation;
    AuditState& state = AuditState::Get();
    state.m_recordPath = path;
    if (!isAvailable || path.empty()) return;
    state.m_leftOn = ReadAuditRecord(path);
    if (!state.m_leftOn.empty()) RestoreAuditPolicy();
    WriteRecord();
}

/// What is held belongs to the proxy from now on, so that its last holder switches it off: it was found
/// switched on because a former run had left it so.
void SystemAuditProxy::RestoreAuditPolicy() {
    AuditState& state = AuditState::Get();
    const SecurityPrivilegeScope scope(*state.log);
    if (!scope.IsActive()) return;
    for (const AuditRecordEntry& entry : std::exchange(state.m_leftOn, {})) {
        if (const auto held = state.m_auditReferenceCounts.find(entry.id);
            held != state.m_auditReferenceCounts.end()) {
            if (!held->second.enabledByProxy) held->second.bitsBefore = entry.bitsBefore;
            held->second.enabledByProxy = true;
            continue;
        }
        if (state.RestoreBits(entry.id.ToMsGuid(), entry.bitsBefore)) {
            state.log->Info("Restored audit sub-category '%s', which a former run had left switched on",
                            entry.id.ToString().c_str());
        } else {
            state.log->Error("Failed to restore audit sub-category '%s' - %s", entry.id.ToString().c_str(),
                             StringUtils::GetLastErrorAsString().c_str());
            state.m_leftOn.push_back(entry);
        }
    }
}

void SystemAuditProxy::WriteRecord() {
    const AuditState& state = AuditState::Get();
    if (state.m_recordPath.empty()) return;
    std::vector<AuditRecordEntry> entries = state.m_leftOn;
    for (const auto& [id, reference] : state.m_auditReferenceCounts) {
        if (reference.enabledByProxy) entries.push_back({id, reference.bitsBefore});
    }
    if (!WriteAuditRecord(state.m_recordPath, entries))
        state.log->Warn("The record of audit sub-categories cannot be written to '%s' - %s",
                        state.m_recordPath.c_str(), StringUtils::GetLastErrorAsString().c_str());
}

}  // namespace quillon
