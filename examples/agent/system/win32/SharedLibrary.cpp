#include "system/SharedLibrary.h"

#include <aclapi.h>
#include <sddl.h>
#include <windows.h>

#include <memory>
#include <string_view>

#include "quillon/StringUtils.h"
#include "system/win32/Handle.h"
#include "system/win32/LastErrorText.h"
#include "system/win32/LibraryTrial.h"

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

/// Null with the system's last error.
Handle Open(const std::string& path, DWORD access, DWORD share) {
    const HANDLE file = ::CreateFileW(StringUtils::NarrowStringToWide(path).c_str(), access, share, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    return Handle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

/// While the file is open nobody writes, renames or removes it, nor renames a directory above it.
Handle Hold(const std::string& path) { return Open(path, GENERIC_READ, FILE_SHARE_READ); }

Handle Look(const std::string& path) {
    return Open(path, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
}

constexpr std::wstring_view kVerbatim = LR"(\\?\)", kVerbatimShare = LR"(\\?\UNC)";

/// Returns the absolute path without links of what is open, or the empty text with the system's last error.
std::wstring RealPath(const Handle& file) {
    if (!file) return {};
    std::wstring path(::GetFinalPathNameByHandleW(file.get(), nullptr, 0, VOLUME_NAME_DOS), L'\0');
    const auto size = static_cast<DWORD>(path.size());
    path.resize(size == 0 ? 0 : ::GetFinalPathNameByHandleW(file.get(), path.data(), size, VOLUME_NAME_DOS));
    if (path.starts_with(kVerbatimShare)) return L'\\' + path.substr(kVerbatimShare.size());
    const bool isShort = path.size() < MAX_PATH && path.starts_with(kVerbatim);
    return isShort ? path.substr(kVerbatim.size()) : path;
}

/// Returns how long the name of a path's volume is, its last backslash included.
std::size_t RootLength(const std::wstring& real) {
    const std::size_t begin = real.starts_with(kVerbatim) ? kVerbatim.size() : 0;
    const std::size_t first = real.find(L'\\', begin + 2);  // behind "C:", or the server
    const bool hasDrive = real.compare(begin + 1, 2, L":\\") == 0;
    return (hasDrive || first == std::wstring::npos ? first : real.find(L'\\', first + 1)) + 1;
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
    if (code != ERROR_SUCCESS) return shown + ": " + SystemErrorText(static_cast<int>(code));
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

std::string CheckWithParents(const std::wstring& real) {
    const std::size_t root = RootLength(real);
    std::string fault = CheckOne(real, kWrite);
    for (std::size_t end = real.rfind(L'\\'); fault.empty() && end != std::wstring::npos && end >= root;
         end = real.rfind(L'\\', end - 1))
        fault = CheckOne(real.substr(0, end), kReplace);
    return fault.empty() ? CheckOne(real.substr(0, root), kReplace) : fault;
}

}  // namespace

const char* const kSharedLibraryEnd = ".dll";

/// The path without links is found out once, of the file that stays open until it is loaded: nothing else can
/// take its place between check and load.
void* LoadFunction(const std::string& path, const char* name, std::string& fault) {
    const Handle file = Hold(path);
    const std::wstring real = RealPath(file);
    fault = real.empty() ? path + ": " + LastErrorText() : CheckWithParents(real);
    if (fault.empty()) fault = TryInProcess(real);
    if (!fault.empty()) return nullptr;
    auto* const library = static_cast<HMODULE>(LoadNow(real));
    const FARPROC function = library == nullptr ? nullptr : ::GetProcAddress(library, name);
    if (function == nullptr) fault = LastErrorText();
    return reinterpret_cast<void*>(function);
}

std::string FindForeignWriter(const std::string& path) {
    const std::wstring real = RealPath(Look(path));
    return real.empty() ? path + ": " + LastErrorText() : CheckWithParents(real);
}

}  // namespace quillon::agent
