#include "platform/LogFileApi.h"

#include "platform/FileApi.h"
#include "platform/TextApi.h"
#include "platform/win32/LineEnds.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// Shared for deletion, so that the file can be renamed while it is open.
HANDLE OpenShared(const std::string& path, DWORD access, DWORD disposition) {
    const auto wide = WidePath(path);
    if (!wide) return INVALID_HANDLE_VALUE;
    return ::CreateFileW(wide->c_str(), access, kShareAll, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                         nullptr);
}

bool IsSameFile(const BY_HANDLE_FILE_INFORMATION& one, const BY_HANDLE_FILE_INFORMATION& other) {
    return one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

/// A byte that no log file reaches: a lock keeps others from reading and writing what it covers.
OVERLAPPED PlaceOfLock() {
    OVERLAPPED place{};
    place.OffsetHigh = 0x7FFF'FFFF;
    return place;
}

}  // namespace

std::string FixedPath(const std::string& path) {
    const auto wide = WidePath(path);
    const auto full = wide ? FullPath(*wide) : std::nullopt;
    return full ? PathFromWide(*full) : path;
}

FileHandle OpenLogFile(const std::string& path) {
    // Without FILE_WRITE_DATA every write goes to the end.
    const DWORD access = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
    FileHandle file(OpenShared(path, access | FILE_READ_DATA, OPEN_ALWAYS));
    if (!file && ::GetLastError() == ERROR_ACCESS_DENIED) file.Reset(OpenShared(path, access, OPEN_ALWAYS));
    if (file && ::GetFileType(file.Get()) == FILE_TYPE_PIPE) {
        file.Reset();
        ::SetLastError(ERROR_INVALID_PARAMETER);
    }
    return file;
}

bool MakeLogDirectory(const std::string& path) {
    const auto wide = WidePath(path);
    return wide && ::CreateDirectoryW(wide->c_str(), nullptr) != 0;
}

bool IsDiskFile(const FileHandle& file) { return ::GetFileType(file.Get()) == FILE_TYPE_DISK; }

bool EndsWithinLine(const FileHandle& file, std::uint64_t size) {
    if (size == 0) return false;
    constexpr unsigned kHalf = 32;
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(size - 1);
    place.OffsetHigh = static_cast<DWORD>((size - 1) >> kHalf);
    char last = '\n';
    DWORD count = 0;
    return ::ReadFile(file.Get(), &last, 1, &count, &place) != 0 && count == 1 && last != '\n';
}

std::optional<std::uint64_t> SizeWhileAt(const FileHandle& file, const std::string& path) {
    const FileHandle named(OpenShared(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING));
    BY_HANDLE_FILE_INFORMATION open{}, there{};
    if (!named || ::GetFileInformationByHandle(file.Get(), &open) == 0 ||
        ::GetFileInformationByHandle(named.Get(), &there) == 0 || !IsSameFile(open, there)) {
        return std::nullopt;
    }
    ULARGE_INTEGER size{};
    size.LowPart = open.nFileSizeLow;
    size.HighPart = open.nFileSizeHigh;
    return size.QuadPart;
}

bool TryLockLogFile(const FileHandle& file) {
    OVERLAPPED place = PlaceOfLock();
    return ::LockFileEx(file.Get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) !=
               0 ||
           ::GetLastError() != ERROR_LOCK_VIOLATION;
}

void UnlockLogFile(const FileHandle& file) {
    OVERLAPPED place = PlaceOfLock();
    ::UnlockFileEx(file.Get(), 0, 1, 0, &place);
}

PathUse UseOfPath(const std::string& path) {
    const auto attributes = AttributesOf(path);
    if (!attributes) return ::GetLastError() == ERROR_FILE_NOT_FOUND ? PathUse::Free : PathUse::Other;
    return attributes->isDirectory || attributes->isLink ? PathUse::Other : PathUse::File;
}

Appended AppendToLogFile(const FileHandle& file, std::string_view text) {
    const std::string bytes = WithCrLf(text);
    DWORD count = 0;
    const BOOL written =
        ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
    return {count, written != 0 && count == bytes.size()};
}

}  // namespace quillon::platform
