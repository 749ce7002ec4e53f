#include "simulation/audit/AuditPolicy.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"

namespace quillon::simulation {

namespace {

/// Tokens are told from events by this value, which no event has.
HANDLE TheToken() { return reinterpret_cast<HANDLE>(std::uintptr_t{0xA0D17}); }

std::string KeyOf(const GUID& subcategory) {
    return {reinterpret_cast<const char*>(&subcategory), sizeof subcategory};
}

bool SucceedsWith(std::uint32_t code) {
    if (code != 0) platform::SetLastErrorCode(code);
    return code == 0;
}

}  // namespace

AuditPolicy& AuditPolicy::Machine() {
    static AuditPolicy& policy = *new AuditPolicy;
    return policy;
}

EntryPoints AuditPolicy::Exports() {
    return {{"AuditQuerySystemPolicy", reinterpret_cast<platform::Procedure>(&Query)},
            {"AuditSetSystemPolicy", reinterpret_cast<platform::Procedure>(&Set)},
            {"AuditFree", reinterpret_cast<platform::Procedure>(&Free)}};
}

platform::AuditCalls AuditPolicy::Calls() {
    platform::AuditCalls calls;
    calls.openThreadToken = [this]() -> HANDLE {
        const std::uint32_t code = CodeOf("openThreadToken");
        platform::SetLastErrorCode(code != 0 ? code : base::kNoToken);
        return nullptr;
    };
    calls.openProcessToken = [this] { return OpenToken("openProcessToken"); };
    calls.setPrivilege = [this](HANDLE, const std::wstring& name, bool enable) {
        return SetPrivilege(name, enable);
    };
    calls.makeEvent = [this]() -> HANDLE {
        return SucceedsWith(CodeOf("makeEvent")) ? m_waits.MakeEvent() : nullptr;
    };
    calls.close = [this](HANDLE handle) { Close(handle); };
    calls.registerWait = [this](HANDLE& wait, HANDLE event, platform::AuditCalls::WaitCallback callback) {
        if (!SucceedsWith(CodeOf("registerWait"))) return false;
        wait = m_waits.Register(event, callback);
        return wait != nullptr;
    };
    calls.unregisterWait = [this](HANDLE wait) { m_waits.Unregister(wait); };
    calls.registerPolicyChange = [this](HANDLE event) {
        if (!SucceedsWith(CodeOf("registerPolicyChange"))) return false;
        const std::lock_guard lock(m_mutex);
        m_notified.push_back(event);
        return true;
    };
    calls.unregisterPolicyChange = [this](HANDLE event) {
        const std::lock_guard lock(m_mutex);
        std::erase(m_notified, event);
    };
    return calls;
}

void AuditPolicy::Reset() {
    m_waits.AwaitQuiet();
    const std::lock_guard lock(m_mutex);
    m_states.clear();
    m_failures.clear();
    m_isPrivilegeEnabled = nullptr;
    m_afterSet = nullptr;
    m_isMuted = m_hasPrivilege = false;
}

void AuditPolicy::SetState(const GUID& subcategory, std::uint32_t bits) {
    {
        const std::lock_guard lock(m_mutex);
        m_states[KeyOf(subcategory)] = bits & platform::kAuditBoth;
        if (m_isMuted) return;
    }
    NotifyChange();
}

void AuditPolicy::AddBits(const GUID& subcategory, std::uint32_t bits) {
    if (bits == 0) return;
    const bool isNew = (bits & platform::kAuditNone) != 0;
    SetState(subcategory, isNew ? bits : State(subcategory) | bits);
}

void AuditPolicy::Mute(bool isMuted) {
    const std::lock_guard lock(m_mutex);
    m_isMuted = isMuted;
}

std::uint32_t AuditPolicy::State(const GUID& subcategory) {
    const std::lock_guard lock(m_mutex);
    return m_states[KeyOf(subcategory)];
}

void AuditPolicy::NotifyChange() {
    std::vector<HANDLE> notified;
    {
        const std::lock_guard lock(m_mutex);
        notified = m_notified;
    }
    for (const HANDLE event : notified) m_waits.Signal(event);
}

void AuditPolicy::FailNext(const std::string& call, std::uint32_t code) {
    const std::lock_guard lock(m_mutex);
    m_failures[call] = code;
}

bool AuditPolicy::IsPrivilegeEnabled() {
    if (m_isPrivilegeEnabled) return m_isPrivilegeEnabled();
    const std::lock_guard lock(m_mutex);
    return m_hasPrivilege;
}

std::size_t AuditPolicy::CountLeftOver() {
    const std::lock_guard lock(m_mutex);
    return m_records + m_tokens + m_notified.size();
}

unsigned char AuditPolicy::Query(const GUID* subcategories, std::uint32_t count,
                                 platform::AuditPolicyRecord** policy) {
    AuditPolicy& machine = Machine();
    if (!machine.May("AuditQuerySystemPolicy")) return 0;
    auto* const records = new platform::AuditPolicyRecord[count]();
    for (std::uint32_t i = 0; i < count; ++i) {
        records[i].subcategory = subcategories[i];
        records[i].auditing = machine.State(subcategories[i]);
    }
    const std::lock_guard lock(machine.m_mutex);
    ++machine.m_records;
    *policy = records;
    return 1;
}

unsigned char AuditPolicy::Set(const platform::AuditPolicyRecord* policy, std::uint32_t count) {
    AuditPolicy& machine = Machine();
    if (!machine.May("AuditSetSystemPolicy")) return 0;
    for (std::uint32_t i = 0; i < count; ++i) machine.AddBits(policy[i].subcategory, policy[i].auditing);
    if (machine.m_afterSet) machine.m_afterSet();
    return 1;
}

void AuditPolicy::Free(void* policy) {
    delete[] static_cast<platform::AuditPolicyRecord*>(policy);
    const std::lock_guard lock(Machine().m_mutex);
    --Machine().m_records;
}

std::uint32_t AuditPolicy::CodeOf(const char* call) {
    const std::lock_guard lock(m_mutex);
    const auto failure = m_failures.extract(call);
    return failure.empty() ? 0 : failure.mapped();
}

bool AuditPolicy::May(const char* call) {
    if (const std::uint32_t code = CodeOf(call)) return SucceedsWith(code);
    return SucceedsWith(IsPrivilegeEnabled() ? 0 : base::kPrivilegeNotHeld);
}

HANDLE AuditPolicy::OpenToken(const char* call) {
    if (!SucceedsWith(CodeOf(call))) return nullptr;
    const std::lock_guard lock(m_mutex);
    ++m_tokens;
    return TheToken();
}

void AuditPolicy::Close(HANDLE handle) {
    if (handle != TheToken()) return m_waits.CloseEvent(handle);
    const std::lock_guard lock(m_mutex);
    --m_tokens;
}

bool AuditPolicy::SetPrivilege(const std::wstring& name, bool enable) {
    if (!SucceedsWith(CodeOf("setPrivilege"))) return false;
    if (name != L"SeSecurityPrivilege") return SucceedsWith(base::kNoSuchPrivilege);
    const std::lock_guard lock(m_mutex);
    m_hasPrivilege = enable;
    return true;
}

}  // namespace quillon::simulation
