#pragma once

#include <functional>
#include <string>
#include <tuple>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Accounts and the forms of their names. Any thread; nothing is logged.
class QUILLON_API UserUtils {
public:
    UserUtils() = delete;

    /// Whether a SID is a user's, and not a group's, the system's or nobody's.
    /// `onError` (may be empty) hears of memory that could not be had.
    static bool IsUser(const std::wstring& sid, const std::function<void(std::string)>& onError);

    /// "LOW:HIGH" in decimal, HIGH signed.
    static std::string LuidToString(const LUID& luid);
    static bool SameLuid(const LUID& first, const LUID& second);

    /// Whether the whole text is "domain\\user", and both parts, either of which may be empty.
    static std::tuple<bool, std::string, std::string> SplitDownLevelLogonName(const std::string& text);
    /// Whether the whole text is "user@domain", and both parts, either of which may be empty.
    static std::tuple<bool, std::string, std::string> SplitUserPrincipalName(const std::string& text);
};

}  // namespace quillon
