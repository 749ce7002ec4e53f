#include <unistd.h>

#include "base/ErrorCodes.h"
#include "platform/AuditApi.h"
#include "platform/ComApi.h"
#include "platform/ErrorText.h"
#include "platform/NetworkApi.h"
#include "platform/ProcedureApi.h"
#include "platform/RegistryApi.h"
#include "platform/SecurityApi.h"
#include "platform/Wbem.h"
#include "platform/posix/SocketStart.h"
#include "simulation/Modules.h"
#include "simulation/audit/AuditPolicy.h"
#include "simulation/com/Com.h"
#include "simulation/eventlog/EventLog.h"
#include "simulation/machine/MachineEventLog.h"
#include "simulation/machine/MachineRegistry.h"
#include "simulation/sockets/Sockets.h"
#include "simulation/token/ProcessToken.h"
#include "simulation/wmi/WmiErrorDetails.h"
#include "simulation/wmi/WmiMessages.h"
#include "simulation/wmi/WmiRepository.h"

// The facilities of Windows that Linux lacks: this file alone puts the simulations behind the seam.

namespace quillon::platform {

namespace {

/// Switches a privilege. Only a process of the superuser holds privileges; one that has given the account
/// up has lost them.
std::uint32_t SwitchPrivilege(const std::wstring& name, bool enable) {
    simulation::ProcessToken& token = simulation::ProcessToken::Process();
    if (::geteuid() == 0) return token.Switch(name, enable);
    token.DisableAll();
    const std::uint32_t code = token.Switch(name, false);
    return code == 0 ? base::kNotAllAssigned : code;
}

bool IsPrivilegeEnabled(const wchar_t* name) {
    return ::geteuid() == 0 && simulation::ProcessToken::Process().IsEnabled(name);
}

}  // namespace

std::int32_t InitializeCom() { return simulation::TheCom().Initialize(); }

void UninitializeCom() { simulation::TheCom().Uninitialize(); }

std::int32_t InitializeComSecurity() { return simulation::TheCom().InitializeSecurity(); }

bool StartSockets() { return simulation::Sockets::Process().Start(); }

void StopSockets() { simulation::Sockets::Process().Stop(); }

bool AreSocketsStarted() {
    const bool areStarted = simulation::Sockets::Process().IsStarted();
    if (!areStarted) SetLastErrorCode(kSocketsNotStarted);
    return areStarted;
}

bool SetPrivilege(const std::wstring& name, bool enable) {
    const std::uint32_t code = SwitchPrivilege(name, enable);
    SetLastErrorCode(code);
    return code == 0;
}

RegistryCalls SystemRegistryCalls() { return simulation::LocalMachine().Calls(); }

AuditCalls SystemAuditCalls() {
    auto& policy = simulation::AuditPolicy::Machine();
    policy.AskForPrivilege([] { return IsPrivilegeEnabled(L"SeSecurityPrivilege"); });
    AuditCalls calls = policy.Calls();
    calls.setPrivilege = [](HANDLE, const std::wstring& name, bool enable) {
        return SetPrivilege(name, enable);
    };
    return calls;
}

ProcedureCalls SystemProcedureCalls() {
    static simulation::Modules& modules = []() -> simulation::Modules& {
        auto& made = *new simulation::Modules;
        made.Set("advapi32.dll", simulation::AuditPolicy::Exports());
        made.Set("wevtapi.dll", simulation::EventLog::Exports());
        simulation::AddOwnChannel(simulation::EventLog::Machine());
        return made;
    }();
    return modules.Calls();
}

WbemCalls SystemWbemCalls() {
    return {
        [](CComPtr<IWbemLocator>& locator) { return simulation::MachineRepository().CreateLocator(locator); },
        [](IWbemServices*) { return simulation::MachineRepository().SetProxyBlanket(); },
        [] { return true; },
        simulation::WmiMessage,
        simulation::SystemMessage,
        simulation::TakeErrorDetails,
    };
}

}  // namespace quillon::platform
