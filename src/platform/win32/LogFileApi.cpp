#include "platform/LogFileApi.h"

#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

std::string WithCrLf(std::string_view text) {
    std::string result;
    result.reserve(text.size() + 2);
    char previous = '\0';
    for (const char c : text) {
        if (c == '\n' && previous != '\r') result.push_back('\r');
        result.push_back(c);
        previous = c;
    }
    return result;
}

}  // namespace

FileHandle OpenLogFile(const std::string& path) {
    const auto wide = WidePath(path);
    if (!wide) return {};
    const DWORD access = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
    FileHandle file(::CreateFileW(wide->c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file && ::GetFileType(file.Get()) == FILE_TYPE_PIPE) {
        file.Reset();
        ::SetLastError(ERROR_INVALID_PARAMETER);
    }
    return file;
}

bool IsDiskFile(const FileHandle& file) { return ::GetFileType(file.Get()) == FILE_TYPE_DISK; }

Appended AppendToLogFile(const FileHandle& file, std::string_view text) {
    const std::string bytes = WithCrLf(text);
    DWORD count = 0;
    const BOOL written =
        ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
    return {count, written != 0 && count == bytes.size()};
}

const char* NullDevice() { return "NUL"; }

}  // namespace quillon::platform
