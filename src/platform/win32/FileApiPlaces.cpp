#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/TextApi.h"
#include "platform/win32/CurrentUser.h"
#include "platform/win32/LocalMemory.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <sddl.h>
#include <shlobj.h>

namespace quillon::platform {

namespace {

using PathBuffer = wchar_t[MAX_PATH];

/// Full access for the current user, nothing inherited, nobody else; `inheritance` as in a descriptor's text.
LocalMemory CurrentUserOnly(const wchar_t* inheritance) {
    const std::wstring user = CurrentUserId();
    if (user.empty()) return {};
    const std::wstring text = std::wstring(L"D:P(A;") + inheritance + L";FA;;;" + user + L")";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &descriptor,
                                                           nullptr);
    return LocalMemory(descriptor);
}

/// Numbers of no file: the system's clock spreads the starts.
UINT StartNumber() {
    LARGE_INTEGER now{};
    ::QueryPerformanceCounter(&now);
    return static_cast<UINT>(now.QuadPart ^ (static_cast<LONGLONG>(::GetCurrentProcessId()) << 4));
}

/// Tries one name after the other until one is free, beginning anywhere.
template <class Create>
std::optional<std::string> CreateNumbered(const std::string& folder, const std::string& prefix,
                                          const wchar_t* inheritance, const Create& create) {
    constexpr UINT kNumbers = 0xFFFF;
    constexpr int kMostDenied = 16;
    const LocalMemory security = CurrentUserOnly(inheritance);
    const auto wideFolder = WidePath(folder), widePrefix = WideName(prefix);
    if (!security || !wideFolder || !widePrefix) return std::nullopt;
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), security.Get(), FALSE};
    int denied = 0;
    const UINT start = StartNumber();
    for (UINT i = 0; i < kNumbers; ++i) {
        // With a number of ours the system only makes the name. What has it is created here, so that only
        // its user can open it from the first moment on.
        PathBuffer name;
        const UINT number = (start + i) % kNumbers + 1;
        if (::GetTempFileNameW(wideFolder->c_str(), widePrefix->c_str(), number, name) == 0)
            return std::nullopt;
        std::string path = PathFromWide(name);  // takes memory, without which nothing is to be made
        if (create(name, attributes)) return path;
        // A name whose file is being deleted is denied; so is a directory, for every name.
        const DWORD error = ::GetLastError();
        const bool isTaken = error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
        if (!isTaken && (error != ERROR_ACCESS_DENIED || ++denied > kMostDenied)) break;
    }
    return std::nullopt;
}

}  // namespace

std::string SystemPath(const std::string& path) { return path; }

std::optional<std::string> TemporaryFolder() {
    PathBuffer folder;
    const DWORD length = ::GetTempPathW(MAX_PATH, folder);
    if (length == 0 || length > MAX_PATH) return std::nullopt;
    return PathFromWide({folder, length});
}

std::optional<std::string> CreateTemporaryFile(const std::string& folder, const std::string& prefix) {
    return CreateNumbered(folder, prefix, L"", [](const wchar_t* name, SECURITY_ATTRIBUTES& attributes) {
        return static_cast<bool>(FileHandle(
            ::CreateFileW(name, GENERIC_WRITE, 0, &attributes, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr)));
    });
}

std::optional<std::string> CreateTemporaryDirectory(const std::string& folder, const std::string& prefix) {
    constexpr const wchar_t* kForAllBelow = L"OICI";
    return CreateNumbered(folder, prefix, kForAllBelow,
                          [](const wchar_t* name, SECURITY_ATTRIBUTES& attributes) {
                              return ::CreateDirectoryW(name, &attributes) != 0;
                          });
}

std::optional<std::string> CurrentFolder() {
    std::wstring folder;
    for (DWORD needed = MAX_PATH; folder.size() < needed;) {
        folder.resize(needed);
        needed = ::GetCurrentDirectoryW(needed, folder.data());
        if (needed == 0) return std::nullopt;
        if (needed < folder.size()) return PathFromWide(std::wstring_view(folder).substr(0, needed));
    }
    return std::nullopt;
}

bool SetCurrentFolder(const std::string& path) {
    const auto wide = WidePath(path);
    return wide && ::SetCurrentDirectoryW(wide->c_str()) != 0;
}

std::optional<std::string> CommonDataFolder() {
    PathBuffer folder;
    const HRESULT result =
        ::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    // S_FALSE: the directory is known, but not there.
    if (result != S_OK || folder[0] == L'\0') return std::nullopt;
    return PathFromWide(folder);
}

std::vector<std::string> LogicalDrives() {
    wchar_t roots[519];
    const DWORD length = ::GetLogicalDriveStringsW(519, roots);
    if (length == 0 || length >= 519) return {};
    std::vector<std::string> drives;
    for (const wchar_t* root = roots; *root != L'\0'; root += drives.back().size() + 1) {
        drives.push_back(base::ToUtf8(root));
    }
    return drives;
}

bool IsFixedDrive(const std::string& root) {
    return ::GetDriveTypeW(base::ToWide(root).c_str()) == DRIVE_FIXED;
}

std::optional<std::string> DeviceNameOfDrive(const std::string& drive) {
    PathBuffer name;
    if (::QueryDosDeviceW(base::ToWide(drive).c_str(), name, MAX_PATH) == 0) return std::nullopt;
    return base::ToUtf8(name);
}

}  // namespace quillon::platform
