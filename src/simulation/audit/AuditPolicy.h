#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/AuditApi.h"
#include "simulation/Modules.h"
#include "simulation/audit/Waits.h"

namespace quillon::simulation {

/// A system's audit policy in memory, with the tokens and notifications that go with
/// it. As on the system, every change notifies those who asked, the caller's own changes too.
/// Any thread; what sets it up comes before.
class AuditPolicy {
public:
    /// The one that the entry points work on. Lives as long as the process.
    static AuditPolicy& Machine();
    static EntryPoints Exports();
    /// Tokens: the process's has the privilege, the thread has no token.
    platform::AuditCalls Calls();

    // --- For those who set it up ---

    /// Forgets everything, once all callbacks have ended. Nothing may be registered.
    void Reset();
    /// The bits of a sub-category, as local or group policy would set them; notifies.
    void SetState(const GUID& subcategory, std::uint32_t bits);
    std::uint32_t State(const GUID& subcategory);
    void NotifyChange();
    /// Whether changes notify by themselves; they do.
    void Mute(bool isMuted);
    /// Lets the next call fail with a code, once. `call` is an entry point or a member of AuditCalls.
    void FailNext(const std::string& call, std::uint32_t code);
    /// Sets the function that says whether the caller has SeSecurityPrivilege switched on, without which
    /// querying and setting fail with ERROR_PRIVILEGE_NOT_HELD (1314).
    void AskForPrivilege(std::function<bool()> isEnabled) { m_isPrivilegeEnabled = std::move(isEnabled); }
    bool IsPrivilegeEnabled();
    /// Runs in every setting, after the change and before it returns to its caller.
    void AfterSet(std::function<void()> function) { m_afterSet = std::move(function); }
    /// Records that were not freed, tokens that were not closed, and registrations for notifications.
    std::size_t CountLeftOver();
    Waits& GetWaits() { return m_waits; }

private:
    AuditPolicy() = default;

    static unsigned char Query(const GUID* subcategories, std::uint32_t count,
                               platform::AuditPolicyRecord** policy);
    static unsigned char Set(const platform::AuditPolicyRecord* policy, std::uint32_t count);
    static void Free(void* policy);

    /// As a caller sets them: bits are added, or take the place of those before together with "none"; 0
    /// changes nothing.
    void AddBits(const GUID& subcategory, std::uint32_t bits);
    std::uint32_t CodeOf(const char* call);
    bool May(const char* call);
    HANDLE OpenToken(const char* call);
    void Close(HANDLE handle);
    bool SetPrivilege(const std::wstring& name, bool enable);

    std::mutex m_mutex;
    std::map<std::string, std::uint32_t> m_states, m_failures;
    std::function<bool()> m_isPrivilegeEnabled;
    std::function<void()> m_afterSet;
    std::vector<HANDLE> m_notified;
    bool m_hasPrivilege = false, m_isMuted = false;
    std::size_t m_records = 0, m_tokens = 0;
    Waits m_waits;
};

}  // namespace quillon::simulation
