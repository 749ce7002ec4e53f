#include "platform/AccountApi.h"

#include <algorithm>

#include "platform/win32/LocalMemory.h"
#include "platform/win32/WindowsHeaders.h"

#include <sddl.h>  // after <windows.h>

namespace quillon::platform {

namespace {

/// "S-1-" and an authority with at most 15 numbers. The conversion is not trusted with more.
bool MayBeSid(const std::wstring& text) {
    constexpr std::size_t kLongest = 256;
    constexpr std::ptrdiff_t kMostDashes = 2 + SID_MAX_SUB_AUTHORITIES;
    return text.size() <= kLongest && std::count(text.begin(), text.end(), L'-') <= kMostDashes;
}

}  // namespace

std::optional<Sid> ParseSid(const std::wstring& text) {
    PSID sid = nullptr;
    if (!MayBeSid(text)) return std::nullopt;
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
