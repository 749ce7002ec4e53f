#include "platform/FileApi.h"
#include "platform/TextApi.h"
#include "platform/win32/FinalPath.h"
#include "platform/win32/OpenFile.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

bool LeadsElsewhere(const std::wstring& path) {
    const FileHandle file(::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    return !file || IsLink(file);
}

std::optional<FileAttributes> AttributesOfWidePath(const std::wstring& path) {
    const DWORD bits = ::GetFileAttributesW(path.c_str());
    if (bits == INVALID_FILE_ATTRIBUTES) return std::nullopt;
    return FileAttributes{(bits & FILE_ATTRIBUTE_DIRECTORY) != 0,
                          (bits & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && LeadsElsewhere(path),
                          (bits & FILE_ATTRIBUTE_READONLY) != 0, false};
}

long long UnixSeconds(const FILETIME& time) {
    constexpr long long kTicksPerSecond = 10'000'000;
    constexpr long long kSecondsFrom1601To1970 = 11'644'473'600;
    const auto ticks = (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    return static_cast<long long>(ticks) / kTicksPerSecond - kSecondsFrom1601To1970;
}

}  // namespace

std::optional<FileIdentity> IdentityOf(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide) return std::nullopt;
    const FileHandle file(::CreateFileW(wide->c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                        OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    return file ? IdentityOf(file) : std::nullopt;
}

std::optional<std::string> ResolvedFolder(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide) return std::nullopt;
    const FileHandle folder(::CreateFileW(wide->c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                          OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    std::wstring resolved = folder ? FinalPath(folder, VOLUME_NAME_DOS) : std::wstring();
    if (resolved.empty()) return std::nullopt;
    return PathFromWide(resolved);
}

std::optional<FileAttributes> AttributesOf(const std::string& path) {
    const auto wide = WidePath(path);
    return wide ? AttributesOfWidePath(*wide) : std::nullopt;
}

std::optional<FileAttributes> AttributesOfAnsiPath(const char* path) {
    return AttributesOfWidePath(AnsiToWide(path));
}

std::optional<FileStatus> StatusOf(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide) return std::nullopt;
    const FileHandle file(::CreateFileW(wide->c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!file || ::GetFileInformationByHandle(file.Get(), &information) == 0) return std::nullopt;
    return FileStatus{(information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                      UnixSeconds(information.ftLastWriteTime)};
}

std::optional<std::uint64_t> SizeOfFile(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide) return std::nullopt;
    const FileHandle file(::CreateFileW(wide->c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    return file ? SizeOfOpenFile(file) : std::nullopt;
}

std::optional<std::uint64_t> SizeOfOpenFile(const FileHandle& file) {
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(file.Get(), &size) == 0) return std::nullopt;
    return static_cast<std::uint64_t>(size.QuadPart);
}

}  // namespace quillon::platform
