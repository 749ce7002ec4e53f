#include "platform/AuditApi.h"

#include "platform/SecurityApi.h"
#include "platform/posix/Privileges.h"
#include "platform/simulated/AuditPolicy.h"

namespace quillon::platform {

AuditCalls SystemAuditCalls() {
    auto& policy = simulated::AuditPolicy::Machine();
    policy.AskForPrivilege([] { return IsPrivilegeEnabled(L"SeSecurityPrivilege"); });
    AuditCalls calls = policy.Calls();
    calls.setPrivilege = [](HANDLE, const std::wstring& name, bool enable) {
        return SetPrivilege(name, enable);
    };
    return calls;
}

}  // namespace quillon::platform
