#pragma once

#include <functional>
#include <string>
#include <tuple>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Classifies accounts and takes their names and identifiers apart. Every operation is
/// thread-safe; nothing is logged.
///
/// @code
/// const auto [matched, domain, user] = UserUtils::SplitDownLevelLogonName("CORP\\jane");
/// if (matched) std::cout << user << " of " << domain << '\n';
/// const auto report = [](std::string problem) { std::cout << problem << '\n'; };
/// std::cout << UserUtils::IsUser(L"S-1-5-21-1-2-3-1001", report) << '\n';
/// @endcode
class QUILLON_API UserUtils {
public:
    UserUtils() = delete;

    /// Returns whether this machine knows a SID ("S-1-...") as a user account (SidTypeUser),
    /// which may ask a domain controller. Returns false for groups, for the local system
    /// ("S-1-5-18", not looked up), for a text that is no SID, for an account that is not known
    /// and for one whose name or domain is longer than 255 bytes. `onError`, which may be
    /// empty, is called on this thread when memory for a name cannot be had. On Linux only
    /// "S-1-22-1-UID" is a user, while the account database knows UID.
    static bool IsUser(const std::wstring& sid, const std::function<void(std::string)>& onError);

    /// Returns a locally unique identifier as "LOW:HIGH" in decimal, HIGH being signed; the
    /// session of the system itself is "999:0".
    static std::string LuidToString(const windows::LUID& luid);
    /// Returns whether both parts of the two identifiers are equal.
    static bool SameLuid(const windows::LUID& first, const windows::LUID& second);

    /// Returns whether the whole text is "domain\user", then the domain and the user. Either
    /// may be empty; a second backslash or an '@' makes it no match, with both parts empty.
    static std::tuple<bool, std::string, std::string> SplitDownLevelLogonName(const std::string& text);
    /// Returns whether the whole text is "user@domain", then the user and the domain. Either
    /// may be empty; a second '@' or a backslash makes it no match, with both parts empty.
    static std::tuple<bool, std::string, std::string> SplitUserPrincipalName(const std::string& text);
};

}  // namespace quillon
