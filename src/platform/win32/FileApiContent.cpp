#include <algorithm>

#include "platform/FileApi.h"
#include "platform/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

constexpr std::size_t kPieceSize = 128 * 1024;

FileHandle OpenForReading(const std::string& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return FileHandle(::CreateFileW(ToWide(path).c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

/// One call transfers at most what a DWORD counts.
DWORD OneTransfer(std::size_t size) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    return static_cast<DWORD>(std::min(size, kMost));
}

/// Bytes read; 0 at the end, nothing on failure.
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

/// A delayed write may fail only here.
bool CloseWritten(FileHandle file) { return ::CloseHandle(file.Release()) != 0; }

FileHandle OpenForWriting(const std::string& path, WriteMode mode) {
    const bool appends = mode == WriteMode::Append;
    return FileHandle(::CreateFileW(ToWide(path).c_str(), appends ? FILE_APPEND_DATA : GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    appends ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

bool ReadPieces(const std::string& path, const std::function<bool(std::string_view)>& visit) {
    const FileHandle file = OpenForReading(path);
    if (!file) return false;
    std::string buffer(kPieceSize, '\0');
    for (;;) {
        const auto count = ReadSome(file, buffer.data(), buffer.size());
        if (!count) return false;
        if (*count == 0 || !visit(std::string_view(buffer).substr(0, *count))) return true;
    }
}

std::optional<std::string> ReadWholeFile(const std::string& path) {
    const FileHandle file = OpenForReading(path);
    if (!file) return std::nullopt;
    // One byte more than it should have: the end is found without growing.
    std::string content(static_cast<std::size_t>(SizeOfOpenFile(file).value_or(0)) + 1, '\0');
    std::size_t length = 0;
    for (;;) {
        const auto count = ReadSome(file, content.data() + length, content.size() - length);
        if (!count) return std::nullopt;
        if (*count == 0) break;
        length += *count;
        if (length == content.size()) content.resize(length + std::max(length, kPieceSize));
    }
    content.resize(length);
    return content;
}

bool WriteWholeFile(const std::string& path, std::string_view head, std::string_view body, WriteMode mode) {
    FileHandle file = OpenForWriting(path, mode);
    return file && WriteAll(file, head) && WriteAll(file, body) && CloseWritten(std::move(file));
}

FileHandle OpenForCapture(const std::string& path) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return FileHandle(::CreateFileW(ToWide(path).c_str(), GENERIC_WRITE, FILE_SHARE_WRITE, &inheritable,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace quillon::platform
