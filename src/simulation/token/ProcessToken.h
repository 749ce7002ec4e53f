#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace quillon::simulation {

/// The privileges in a process's access token, in memory. Names are the system's, such as
/// "SeSecurityPrivilege", and case-sensitive. Thread-safe.
class ProcessToken {
public:
    /// Returns the process's, which holds what a service's token holds and lives as long as the process.
    static ProcessToken& Process();

    /// Switches a privilege. Returns 0, 1300 (ERROR_NOT_ALL_ASSIGNED) when the token does not hold it, or
    /// 1313 (ERROR_NO_SUCH_PRIVILEGE).
    std::uint32_t Switch(const std::wstring& name, bool enable);
    bool IsEnabled(const std::wstring& name);
    /// Switches every privilege off.
    void DisableAll();

    // --- For those who test ---

    /// Gives or takes one privilege; a name that is unknown is ignored.
    void Hold(const std::wstring& name, bool isHeld);

private:
    struct Privilege {
        bool isHeld = true;
        bool isEnabled = false;
    };

    ProcessToken();

    std::mutex m_mutex;
    std::map<std::wstring, Privilege> m_privileges;
};

}  // namespace quillon::simulation
