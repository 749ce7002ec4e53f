#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

struct SearchTraits {
    using Type = HANDLE;
    static Type Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type value) noexcept {
        const DWORD code = ::GetLastError();
        ::FindClose(value);
        ::SetLastError(code);
    }
};

DirectoryEntry ToEntry(const WIN32_FIND_DATAW& found) {
    return {base::ToUtf8(found.cFileName), (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
            IsLink(found.dwFileAttributes, found.dwReserved0)};
}

}  // namespace

bool EnumerateMatches(const std::string& pattern, const std::function<bool(const DirectoryEntry&)>& visit) {
    const auto wide = WidePath(pattern);
    if (!wide) return false;
    WIN32_FIND_DATAW found{};
    const Handle<SearchTraits> search(::FindFirstFileW(wide->c_str(), &found));
    if (!search) return false;
    do {
        if (!visit(ToEntry(found))) return true;
    } while (::FindNextFileW(search.Get(), &found) != 0);
    return ::GetLastError() == ERROR_NO_MORE_FILES;
}

}  // namespace quillon::platform
