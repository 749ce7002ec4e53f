#include <algorithm>

#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// The server of a pipe must not act as the agent.
constexpr DWORD kNoImpersonation = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

/// One call transfers at most what a DWORD counts.
DWORD OneTransfer(std::size_t size) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    return static_cast<DWORD>(std::min(size, kMost));
}

/// A delayed write may fail only here.
bool CloseWritten(FileHandle file) { return ::CloseHandle(file.Release()) != 0; }

/// Serial lines and pipes would be waited for without an end.
FileHandle OnlyDiskFile(FileHandle file) {
    if (file && ::GetFileType(file.Get()) != FILE_TYPE_DISK) {
        file.Reset();
        ::SetLastError(ERROR_ACCESS_DENIED);
    }
    return file;
}

FileHandle OpenForWriting(const std::string& path, WriteMode mode) {
    const bool appends = mode == WriteMode::Append;
    const auto wide = WidePath(path);
    if (!wide) return {};
    return OnlyDiskFile(FileHandle(::CreateFileW(
        wide->c_str(), appends ? FILE_APPEND_DATA : GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
        nullptr, appends ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL | kNoImpersonation, nullptr)));
}

}  // namespace

FileHandle OpenForReading(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide) return {};
    return OnlyDiskFile(FileHandle(
        ::CreateFileW(wide->c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN | kNoImpersonation, nullptr)));
}

void PrepareMemory(void*, std::size_t) {}

std::optional<std::size_t> ReadSome(const FileHandle& file, char* buffer, std::size_t size) {
    DWORD count = 0;
    if (::ReadFile(file.Get(), buffer, OneTransfer(size), &count, nullptr) == 0) return std::nullopt;
    return count;
}

bool WriteAll(const FileHandle& file, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD count = 0;
        if (::WriteFile(file.Get(), bytes.data(), OneTransfer(bytes.size()), &count, nullptr) == 0) {
            return false;
        }
        bytes.remove_prefix(count);
    }
    return true;
}

FileHandle CopyOf(const FileHandle& file) {
    const HANDLE process = ::GetCurrentProcess();
    HANDLE copy = nullptr;
    if (::DuplicateHandle(process, file.Get(), process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS) != 0)
        return FileHandle(copy);
    return {};
}

bool WriteWholeFile(const std::string& path, std::string_view head, std::string_view body, WriteMode mode) {
    FileHandle file = OpenForWriting(path, mode);
    return file && WriteAll(file, head) && WriteAll(file, body) && CloseWritten(std::move(file));
}

}  // namespace quillon::platform
