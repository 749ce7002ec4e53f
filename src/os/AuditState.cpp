#include "os/AuditState.h"

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr const wchar_t* kPrivilege = L"SeSecurityPrivilege";

}  // namespace

AuditState& AuditState::Get() {
    static AuditState& state = *new AuditState;
    return state;
}

bool AuditState::SetBits(const GUID& subcategory, std::uint32_t bits) const {
    const platform::AuditPolicyRecord record{subcategory, bits, subcategory};
    return AuditSetSystemPolicy(&record, 1) != 0;
}

bool AuditState::RestoreBits(const GUID& subcategory, std::uint32_t bits) const {
    bits &= platform::kAuditBoth;
    return SetBits(subcategory, platform::kAuditNone) && (bits == 0 || SetBits(subcategory, bits));
}

void AuditState::ForgetFunctions() {
    const std::lock_guard lock(m_auditSync);
    m_isInitialized = m_isAvailable = false;
    m_recordPath.clear();
    m_leftOn.clear();
}

AuditOperation::AuditOperation() : m_lock(AuditState::Get().m_auditSync) { AuditState::Get().log = &m_log; }

AuditOperation::~AuditOperation() {
    AuditState::Get().log = nullptr;
    m_lock.unlock();
    m_log.WriteTo(detail::RegisteredLoggerIfAny());
}

SecurityPrivilegeScope::SecurityPrivilegeScope(ICLogger& log) : m_log(log) {
    OpenToken();
    if (!m_token) {
        m_log.Error("Failed to get effective token for process security adjustment");
        return;
    }
    m_isActive = platform::Audit().setPrivilege(m_token.Get(), kPrivilege, true);
    if (m_isActive) {
        m_log.Trace("Enabled token privilege 'SeSecurityPrivilege'");
    } else {
        m_log.Error("Failed to enable 'SeSecurityPrivilege' for system audit policy interaction");
    }
}

SecurityPrivilegeScope::~SecurityPrivilegeScope() {
    if (!m_isActive) return;
    try {
        platform::Audit().setPrivilege(m_token.Get(), kPrivilege, false);
        m_log.Trace("Disabled token privilege 'SeSecurityPrivilege'");
    } catch (...) {
        // There is no memory for the entry, and nobody else to tell.
    }
}

void SecurityPrivilegeScope::OpenToken() {
    m_token.Reset(platform::Audit().openThreadToken());
    if (!m_token && platform::LastError() == base::kNoToken)
        m_token.Reset(platform::Audit().openProcessToken());
}

}  // namespace quillon
