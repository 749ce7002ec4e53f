#include "platform/posix/Privileges.h"

#include <unistd.h>

#include <map>
#include <mutex>

#include "platform/ErrorText.h"
#include "platform/SecurityApi.h"

namespace quillon::platform {

namespace {

struct Privilege {
    bool isHeld = false;
    bool isEnabled = false;
};

class Token {
public:
    static Token& OfProcess() {
        static Token& token = *new Token;  // threads may ask while the process ends
        return token;
    }

    template <class Use>
    auto With(const std::wstring& name, Use use) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_privileges.find(name);
        return use(found == m_privileges.end() ? nullptr : &found->second);
    }

private:
    Token() {
        const bool isRoot = ::geteuid() == 0;
        for (const wchar_t* const name :
             {L"SeAuditPrivilege", L"SeBackupPrivilege", L"SeDebugPrivilege", L"SeRestorePrivilege",
              L"SeSecurityPrivilege", L"SeShutdownPrivilege", L"SeTakeOwnershipPrivilege"}) {
            m_privileges[name] = {isRoot, false};
        }
    }

    std::mutex m_mutex;
    std::map<std::wstring, Privilege> m_privileges;
};

}  // namespace

bool SetPrivilege(const std::wstring& name, bool enable) {
    constexpr std::uint32_t kNotAllAssigned = 1300;
    constexpr std::uint32_t kNoSuchPrivilege = 1313;
    const std::uint32_t code = Token::OfProcess().With(name, [enable](Privilege* privilege) {
        if (privilege == nullptr) return kNoSuchPrivilege;
        if (!privilege->isHeld) return kNotAllAssigned;
        privilege->isEnabled = enable;
        return std::uint32_t{0};
    });
    SetLastErrorCode(code);
    return code == 0;
}

void SetPrivilegeHeld(const std::wstring& name, bool isHeld) {
    Token::OfProcess().With(name, [isHeld](Privilege* privilege) {
        if (privilege != nullptr) *privilege = {isHeld, isHeld && privilege->isEnabled};
    });
}

bool IsPrivilegeEnabled(const std::wstring& name) {
    return Token::OfProcess().With(
        name, [](const Privilege* privilege) { return privilege != nullptr && privilege->isEnabled; });
}

}  // namespace quillon::platform
