#include "platform/FileApi.h"
#include "platform/win32/FoundEntry.h"
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

std::int64_t Joined(DWORD high, DWORD low) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(high) << 32 | low);
}

std::int64_t Ticks(const FILETIME& time) { return Joined(time.dwHighDateTime, time.dwLowDateTime); }

FoundEntry Facts(const WIN32_FIND_DATAW& found) {
    return {found.cFileName,
            found.dwFileAttributes,
            found.dwReserved0,
            Joined(found.nFileSizeHigh, found.nFileSizeLow),
            Ticks(found.ftLastWriteTime),
            Ticks(found.ftLastAccessTime),
            Ticks(found.ftCreationTime)};
}

}  // namespace

bool EnumerateMatches(const std::string& pattern, const std::function<bool(const DirectoryEntry&)>& visit) {
    const auto wide = WidePath(pattern);
    if (!wide) return false;
    WIN32_FIND_DATAW found{};
    const Handle<SearchTraits> search(::FindFirstFileW(wide->c_str(), &found));
    if (!search) return false;
    do {
        if (!visit(ToEntry(Facts(found)))) return true;
    } while (::FindNextFileW(search.Get(), &found) != 0);
    return ::GetLastError() == ERROR_NO_MORE_FILES;
}

}  // namespace quillon::platform
