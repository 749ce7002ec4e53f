#include "platform/AccountApi.h"

#include "platform/win32/LocalMemory.h"
#include "platform/win32/WindowsHeaders.h"

#include <sddl.h>  // after <windows.h>

namespace quillon::platform {

std::optional<Sid> ParseSid(const std::wstring& text) {
    PSID sid = nullptr;
    if (::ConvertStringSidToSidW(text.c_str(), &sid) == 0) return std::nullopt;
    const LocalMemory owner(sid);
    const auto* const bytes = static_cast<const unsigned char*>(sid);
    return Sid(bytes, bytes + ::GetLengthSid(sid));
}

bool IsUserAccount(const Sid& sid, char* domain, char* account) {
    DWORD domainSize = kAccountNameSize;
    DWORD accountSize = kAccountNameSize;
    SID_NAME_USE kind = SidTypeUnknown;
    Sid copy = sid;  // the system does not take a const one
    return ::LookupAccountSidA(nullptr, copy.data(), account, &accountSize, domain, &domainSize, &kind) !=
               0 &&
           kind == SidTypeUser;
}

LuidParts PartsOf(const LUID& luid) { return {luid.LowPart, luid.HighPart}; }

}  // namespace quillon::platform
