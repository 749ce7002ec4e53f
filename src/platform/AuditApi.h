#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/Handle.h"
#include "platform/ole/OleTypes.h"
#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// The system's policy of one sub-category.
struct AuditPolicyRecord {
    GUID subcategory;
    std::uint32_t auditing;  // the bits below
    GUID category;
};
inline constexpr std::uint32_t kAuditSuccess = 1;
inline constexpr std::uint32_t kAuditFailure = 2;
inline constexpr std::uint32_t kAuditBoth = kAuditSuccess | kAuditFailure;
inline constexpr std::uint32_t kAuditNone = 4;

/// The functions of advapi32.dll; those that fail return 0. See LastError().
using AuditQuerySystemPolicy = unsigned char (*)(const GUID* subcategories, std::uint32_t count,
                                                 AuditPolicyRecord** policy);
using AuditSetSystemPolicy = unsigned char (*)(const AuditPolicyRecord* policy, std::uint32_t count);
using AuditFree = void (*)(void* policy);

/// The calls of the system that changing and watching the audit policy needs in addition. Outside Windows
/// the simulated policy answers them. The reason of a failure is the last error.
struct AuditCalls {
    using WaitCallback = void (*)(void* context, unsigned char timedOut);

    /// The calling thread's token and the process's, to query and adjust; null on
    /// failure, base::kNoToken when the thread has none of its own.
    std::function<HANDLE()> openThreadToken;
    std::function<HANDLE()> openProcessToken;
    /// Switches a privilege of a token as SetPrivilege does.
    std::function<bool(HANDLE token, const std::wstring& name, bool enable)> setPrivilege;
    /// An event without a name, not signalled, that one waiter resets; null on failure.
    std::function<HANDLE()> makeEvent;
    /// Closes a token or an event.
    std::function<void(HANDLE)> close;
    /// Calls `callback`, without a context, on a thread of the system's pool, each time that
    /// the event is signalled; never for a time-out.
    std::function<bool(HANDLE& wait, HANDLE event, WaitCallback callback)> registerWait;
    /// Does not wait for a callback that runs.
    std::function<void(HANDLE wait)> unregisterWait;
    /// Lets every change of the system's audit policy signal the event.
    std::function<bool(HANDLE event)> registerPolicyChange;
    std::function<void(HANDLE event)> unregisterPolicyChange;
};

/// The calls in force. Thread-safe.
const AuditCalls& Audit();
AuditCalls SystemAuditCalls();
/// Replaces the calls; for tests, while nothing is audited. Thread-safe.
void ReplaceAuditCalls(AuditCalls calls);

struct AuditTokenTraits {
    using Type = HANDLE;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept;
};
using AuditToken = Handle<AuditTokenTraits>;

struct AuditEventTraits {
    using Type = HANDLE;
    static Type Invalid() noexcept { return reinterpret_cast<HANDLE>(-1); }
    static void Close(Type value) noexcept;
};
using AuditEvent = Handle<AuditEventTraits>;

struct AuditWaitTraits {
    using Type = HANDLE;
    static Type Invalid() noexcept { return reinterpret_cast<HANDLE>(-1); }
    static void Close(Type value) noexcept;
};
using AuditWait = Handle<AuditWaitTraits>;

}  // namespace quillon::platform
