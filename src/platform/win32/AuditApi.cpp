#include "platform/AuditApi.h"

#include "platform/win32/Token.h"
// After <windows.h>:
#include <ntsecapi.h>

namespace quillon::platform {

namespace {

constexpr DWORD kTokenRights = TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY;

HANDLE OpenOwnThreadToken() {
    HANDLE token = nullptr;
    return ::OpenThreadToken(::GetCurrentThread(), kTokenRights, TRUE, &token) != 0 ? token : nullptr;
}

HANDLE OpenOwnProcessToken() { return OpenToken(kTokenRights).Release(); }

HANDLE MakeEvent() { return ::CreateEventW(nullptr, FALSE, FALSE, nullptr); }

bool RegisterWait(HANDLE& wait, HANDLE event, AuditCalls::WaitCallback callback) {
    return ::RegisterWaitForSingleObject(&wait, event, callback, nullptr, INFINITE, WT_EXECUTEDEFAULT) != 0;
}

/// Succeeds like an NTSTATUS: not negative.
bool RegisterPolicyChange(HANDLE event) {
    return ::LsaRegisterPolicyChangeNotification(PolicyNotifyAuditEventsInformation, event) >= 0;
}

void UnregisterPolicyChange(HANDLE event) {
    ::LsaUnregisterPolicyChangeNotification(PolicyNotifyAuditEventsInformation, event);
}

}  // namespace

static_assert(sizeof(AuditPolicyRecord) == 36, "as the system lays it out");

AuditCalls SystemAuditCalls() {
    return {OpenOwnThreadToken,
            OpenOwnProcessToken,
            SetTokenPrivilege,
            MakeEvent,
            FileTraits::Close,
            RegisterWait,
            [](HANDLE wait) { ::UnregisterWait(wait); },
            RegisterPolicyChange,
            UnregisterPolicyChange};
}

}  // namespace quillon::platform
