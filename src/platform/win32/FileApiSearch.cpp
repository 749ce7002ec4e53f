#include "base/PathEscapes.h"
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

TimePoint ToTimePoint(const FILETIME& time) {
    constexpr std::int64_t kTicksFrom1601To1970 = 116'444'736'000'000'000;
    const auto ticks =
        static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
    return ticks == 0 ? TimePoint() : TimePoint(TimePoint::duration(ticks - kTicksFrom1601To1970));
}

DirectoryEntry ToEntry(const WIN32_FIND_DATAW& found) {
    const bool isDirectory = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::uint64_t size = static_cast<std::uint64_t>(found.nFileSizeHigh) << 32 | found.nFileSizeLow;
    return {base::NameToUtf8(found.cFileName),
            isDirectory,
            IsLink(found.dwFileAttributes, found.dwReserved0),
            isDirectory ? 0 : size,
            ToTimePoint(found.ftLastWriteTime),
            ToTimePoint(found.ftLastAccessTime),
            ToTimePoint(found.ftCreationTime)};
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
