#include "platform/SecurityApi.h"

#include <vector>

#include "platform/ErrorText.h"
#include "platform/win32/CurrentUser.h"
#include "platform/win32/LocalMemory.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/Token.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <aclapi.h>

namespace quillon::platform {

namespace {

constexpr SECURITY_INFORMATION kAllParts = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION |
                                           DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION;

/// Returns whether the system has adjusted the token and says that nothing was left out.
bool Adjust(HANDLE token, TOKEN_PRIVILEGES& state, TOKEN_PRIVILEGES* previous) {
    DWORD size = sizeof(TOKEN_PRIVILEGES);
    const BOOL adjusted =
        ::AdjustTokenPrivileges(token, FALSE, &state, size, previous, previous == nullptr ? nullptr : &size);
    return adjusted != 0 && ::GetLastError() == ERROR_SUCCESS;
}

LocalMemory ListForUser(PSID user) {
    constexpr DWORD kEveryRight = GENERIC_ALL | STANDARD_RIGHTS_ALL;
    EXPLICIT_ACCESSW entry{};
    entry.grfAccessPermissions = kEveryRight;
    entry.grfAccessMode = SET_ACCESS;
    entry.grfInheritance = NO_INHERITANCE;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    entry.Trustee.TrusteeType = TRUSTEE_IS_USER;
    entry.Trustee.ptstrName = static_cast<LPWSTR>(user);
    PACL list = nullptr;
    const DWORD code = ::SetEntriesInAclW(1, &entry, nullptr, &list);
    if (code != ERROR_SUCCESS) ::SetLastError(code);
    return LocalMemory(list);
}

/// Opens the file itself, to which the rights are given whatever has its name by then; a link, which
/// another user may have put there, is refused.
FileHandle OpenItself(const std::string& path, DWORD access) {
    const auto wide = WidePath(path);
    if (!wide) return {};
    FileHandle file(::CreateFileW(wide->c_str(), access | FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                  nullptr));
    BY_HANDLE_FILE_INFORMATION facts{};
    if (!file || ::GetFileInformationByHandle(file.Get(), &facts) == 0) return {};
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 || !IsLink(file)) return file;
    FailWithCode(ERROR_CANT_RESOLVE_FILENAME);
    return {};
}

}  // namespace

bool SetPrivilege(const std::wstring& name, bool enable) {
    const Token token = OpenToken(TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY);
    return token && SetTokenPrivilege(token.Get(), name, enable);
}

bool SetTokenPrivilege(HANDLE token, const std::wstring& name, bool enable) {
    TOKEN_PRIVILEGES state{};
    state.PrivilegeCount = 1;
    if (::LookupPrivilegeValueW(nullptr, name.c_str(), &state.Privileges[0].Luid) == 0) return false;
    TOKEN_PRIVILEGES previous{};
    if (!Adjust(token, state, &previous)) return false;
    // The system leaves the previous state empty when the privilege was off already.
    previous.PrivilegeCount = 1;
    previous.Privileges[0].Luid = state.Privileges[0].Luid;
    DWORD& attributes = previous.Privileges[0].Attributes;
    attributes = enable ? attributes | SE_PRIVILEGE_ENABLED : attributes & ~DWORD{SE_PRIVILEGE_ENABLED};
    return Adjust(token, previous, nullptr);
}

std::optional<std::string> ReadSecurity(const std::string& path, std::size_t limit) {
    const auto wide = WidePath(path);
    if (!wide) return std::nullopt;
    const FileHandle file(::CreateFileW(wide->c_str(), READ_CONTROL | ACCESS_SYSTEM_SECURITY, kShareAll,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    std::string security(limit, '\0');
    DWORD needed = 0;
    if (!file || ::GetKernelObjectSecurity(file.Get(), kAllParts, security.data(), static_cast<DWORD>(limit),
                                           &needed) == 0)
        return std::nullopt;
    return security;
}

bool WriteSecurity(const std::string& path, const std::string& security) {
    const FileHandle file = OpenItself(path, WRITE_DAC | WRITE_OWNER | ACCESS_SYSTEM_SECURITY);
    std::string copy = security;
    return file && ::SetKernelObjectSecurity(file.Get(), kAllParts, copy.data()) != 0;
}

bool RestrictToCurrentUser(const std::string& path) {
    std::vector<unsigned char> user = CurrentUser();
    if (user.empty()) return false;
    const LocalMemory list = ListForUser(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
    const FileHandle file = list ? OpenItself(path, READ_CONTROL | WRITE_DAC) : FileHandle();
    if (!file) return false;
    const DWORD code = ::SetSecurityInfo(file.Get(), SE_FILE_OBJECT,
                                         DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                                         nullptr, nullptr, static_cast<PACL>(list.Get()), nullptr);
    return code == ERROR_SUCCESS || FailWithCode(code);
}

}  // namespace quillon::platform
