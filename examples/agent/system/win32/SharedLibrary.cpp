#include "system/SharedLibrary.h"

#include <aclapi.h>
#include <sddl.h>
#include <windows.h>

#include <memory>

#include "quillon/StringUtils.h"
#include "system/PrivateFile.h"

namespace quillon::agent {

namespace {

/// The rights that change a file, or what a directory holds.
constexpr DWORD kWrite = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE | WRITE_DAC |
                         WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
/// Those that put something else in the place of what a directory holds. Everybody may make directories
/// in the root of a volume.
constexpr DWORD kReplace = FILE_DELETE_CHILD | DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_ALL;
/// The system, the administrators, and the service that installs the system's files.
constexpr const wchar_t* kTrusted[] = {L"S-1-5-18", L"S-1-5-32-544",
                                       L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"};

struct Free {
    void operator()(void* memory) const { ::LocalFree(memory); }
};
template <class T>
using Local = std::unique_ptr<T, Free>;

std::string ErrorText(DWORD code) { return SystemErrorText(static_cast<int>(code)); }

/// Returns the absolute path without "." and "..", or the empty text with the system's last error.
std::wstring FullPath(const std::string& path) {
    const std::wstring wide = StringUtils::NarrowStringToWide(path);
    std::wstring full(::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(full.empty() ? 0
                             : ::GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(),
                                                  nullptr));
    return full;
}

std::wstring TextOf(PSID sid) {
    wchar_t* text = nullptr;
    if (!::ConvertSidToStringSidW(sid, &text)) return L"an unknown account";
    return Local<wchar_t>(text).get();
}

bool IsOwnAccount(PSID sid) {
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
    alignas(TOKEN_USER) char buffer[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD size = 0;
    const bool isRead = ::GetTokenInformation(token, TokenUser, buffer, sizeof(buffer), &size) != 0;
    ::CloseHandle(token);
    return isRead && ::EqualSid(reinterpret_cast<TOKEN_USER*>(buffer)->User.Sid, sid);
}

bool IsTrusted(PSID sid) {
    const std::wstring text = TextOf(sid);
    for (const wchar_t* const trusted : kTrusted) {
        if (text == trusted) return true;
    }
    return IsOwnAccount(sid);
}

/// Returns the account that an entry gives one of the rights; null for none. An entry that is only inherited
/// does not count here.
PSID Grantee(ACL* list, DWORD index, DWORD rights) {
    void* entry = nullptr;
    if (!::GetAce(list, index, &entry)) return nullptr;
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    const bool isGrant = allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE ||
                         allowed->Header.AceType == ACCESS_ALLOWED_CALLBACK_ACE_TYPE;
    if (!isGrant || (allowed->Header.AceFlags & INHERIT_ONLY_ACE) != 0) return nullptr;
    return (allowed->Mask & rights) != 0 ? &allowed->SidStart : nullptr;
}

std::string CheckOne(const std::wstring& path, DWORD rights) {
    PSID owner = nullptr;
    ACL* list = nullptr;
    void* held = nullptr;
    const std::string shown = StringUtils::WideStringToNarrow(path);
    const DWORD code = ::GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT,
                                               OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                                               nullptr, &list, nullptr, &held);
    const Local<void> descriptor(held);
    if (code != ERROR_SUCCESS) return shown + ": " + ErrorText(code);
    if (!IsTrusted(owner))
        return shown + " belongs to the account " + StringUtils::WideStringToNarrow(TextOf(owner));
    if (list == nullptr) return shown + " may be written by everybody";
    for (DWORD index = 0; index < list->AceCount; ++index) {
        const PSID grantee = Grantee(list, index, rights);
        if (grantee != nullptr && !IsTrusted(grantee))
            return shown + " may be written by the account " +
                   StringUtils::WideStringToNarrow(TextOf(grantee));
    }
    return {};
}

}  // namespace

const char* const kSharedLibraryEnd = ".dll";

void* LoadFunction(const std::string& path, const char* name, std::string& fault) {
    fault = FindForeignWriter(path);
    if (!fault.empty()) return nullptr;
    const HMODULE library =
        ::LoadLibraryExW(FullPath(path).c_str(), nullptr,
                         LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_APPLICATION_DIR |
                             LOAD_LIBRARY_SEARCH_SYSTEM32);
    const FARPROC function = library == nullptr ? nullptr : ::GetProcAddress(library, name);
    if (function == nullptr) fault = ErrorText(::GetLastError());
    return reinterpret_cast<void*>(function);
}

std::string FindForeignWriter(const std::string& path) {
    const std::wstring full = FullPath(path);
    if (full.empty()) return path + ": " + ErrorText(::GetLastError());
    std::string fault = CheckOne(full, kWrite);
    for (std::size_t end = full.rfind(L'\\'); fault.empty() && end != std::wstring::npos && end > 2;
         end = full.rfind(L'\\', end - 1))
        fault = CheckOne(full.substr(0, end), kReplace);
    return fault;
}

}  // namespace quillon::agent
