#include "simulation/token/ProcessToken.h"

#include "base/ErrorCodes.h"

namespace quillon::simulation {

namespace {}  // namespace

ProcessToken::ProcessToken() {
    for (const wchar_t* const name :
         {L"SeAuditPrivilege", L"SeBackupPrivilege", L"SeDebugPrivilege", L"SeRestorePrivilege",
          L"SeSecurityPrivilege", L"SeShutdownPrivilege", L"SeTakeOwnershipPrivilege"}) {
        m_privileges[name] = {};
    }
}

ProcessToken& ProcessToken::Process() {
    static ProcessToken& token = *new ProcessToken;  // threads may ask while the process ends
    return token;
}

std::uint32_t ProcessToken::Switch(const std::wstring& name, bool enable) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_privileges.find(name);
    if (found == m_privileges.end()) return base::kNoSuchPrivilege;
    if (!found->second.isHeld) return base::kNotAllAssigned;
    found->second.isEnabled = enable;
    return 0;
}

bool ProcessToken::IsEnabled(const std::wstring& name) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_privileges.find(name);
    return found != m_privileges.end() && found->second.isEnabled;
}

void ProcessToken::DisableAll() {
    const std::lock_guard lock(m_mutex);
    for (auto& [name, privilege] : m_privileges) privilege.isEnabled = false;
}

void ProcessToken::Hold(const std::wstring& name, bool isHeld) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_privileges.find(name);
    if (found != m_privileges.end()) found->second = {isHeld, isHeld && found->second.isEnabled};
}

}  // namespace quillon::simulation
