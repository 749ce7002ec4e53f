#include "system/ContentFiles.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "common/TemporaryName.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

struct Closer {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const {
        if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
    }
};

class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle = INVALID_HANDLE_VALUE) : m_handle(handle) {}
    HANDLE Get() const { return m_handle.get(); }
    bool IsOpen() const { return m_handle.get() != INVALID_HANDLE_VALUE; }
    void Close() { m_handle.reset(INVALID_HANDLE_VALUE); }

private:
    std::unique_ptr<void, Closer> m_handle;
};

std::string LastFault() {
    std::string text = StringUtils::GetErrorAsString(static_cast<std::int32_t>(::GetLastError()));
    return StringUtils::Trim(text);
}

/// Without a limit of length, and without a second reading of the names in it.
std::wstring ExtendedPath(const std::string& path) {
    const std::wstring given = StringUtils::NarrowStringToWide(path);
    std::wstring full(::GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    if (full.starts_with(L"\\\\?\\")) return full;
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

DWORD Piece(std::size_t count) {
    return static_cast<DWORD>(std::min<std::size_t>(count, std::numeric_limits<int>::max()));
}

/// A directory that, held open, can be neither renamed nor replaced. `isBelow`: a link is refused.
std::string HoldFolder(const std::wstring& path, bool isBelow, std::vector<OwnedHandle>& held) {
    const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | (isBelow ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
    OwnedHandle folder(::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES | FILE_LIST_DIRECTORY,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, flags,
                                     nullptr));
    if (!folder.IsOpen()) return LastFault();
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (!::GetFileInformationByHandle(folder.Get(), &facts)) return LastFault();
    const DWORD kinds = FILE_ATTRIBUTE_DIRECTORY | (isBelow ? FILE_ATTRIBUTE_REPARSE_POINT : 0);
    if ((facts.dwFileAttributes & kinds) != FILE_ATTRIBUTE_DIRECTORY)
        return "a link or a file stands in the place of a folder";
    held.push_back(std::move(folder));
    return {};
}

class WindowsNewFile final : public NewFile {
public:
    WindowsNewFile(std::vector<OwnedHandle> folders, const std::wstring& folder, const std::string& name)
        : m_folders(std::move(folders)),
          m_path(folder + L'\\' + StringUtils::NarrowStringToWide(name)),
          m_temporary(folder + L'\\' + StringUtils::NarrowStringToWide(MakeTemporaryName())) {}
    ~WindowsNewFile() override {
        m_file.Close();
        if (m_isThere) ::DeleteFileW(m_temporary.c_str());
    }

    std::string Open() {
        m_file = OwnedHandle(::CreateFileW(m_temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
        m_isThere = m_file.IsOpen();
        return m_isThere ? std::string() : LastFault();
    }

    std::string Write(const char* bytes, std::size_t count) override {
        while (count > 0) {
            DWORD written = 0;
            if (!::WriteFile(m_file.Get(), bytes, Piece(count), &written, nullptr)) return LastFault();
            bytes += written;
            count -= written;
        }
        return {};
    }

    std::string Commit() override {
        if (!::FlushFileBuffers(m_file.Get())) return LastFault();
        m_file.Close();
        if (!::MoveFileExW(m_temporary.c_str(), m_path.c_str(),
                           MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return LastFault();
        m_isThere = false;
        return {};
    }

private:
    std::vector<OwnedHandle> m_folders;
    const std::wstring m_path, m_temporary;
    OwnedHandle m_file;
    bool m_isThere = false;
};

}  // namespace

struct SourceFile::State {
    OwnedHandle file;
};

SourceFile::SourceFile() : m_state(std::make_unique<State>()) {}
SourceFile::~SourceFile() = default;

std::string SourceFile::Open(const std::string& path) {
    m_state->file = OwnedHandle(::CreateFileW(ExtendedPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                              nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!m_state->file.IsOpen()) return LastFault();
    return ::GetFileType(m_state->file.Get()) == FILE_TYPE_DISK ? "" : "not a regular file";
}

std::string SourceFile::Read(char* bytes, std::size_t& count) {
    DWORD size = 0;
    const bool isRead = ::ReadFile(m_state->file.Get(), bytes, Piece(count), &size, nullptr) != 0;
    count = isRead ? size : 0;
    return isRead ? "" : LastFault();
}

struct DestinationFolder::State {
    std::wstring path;
};

DestinationFolder::DestinationFolder() : m_state(std::make_unique<State>()) {}
DestinationFolder::~DestinationFolder() = default;

std::string DestinationFolder::Open(const std::string& path) {
    if (!FileSystemUtils::Exists(path)) FileSystemUtils::MakeDirectory(path);
    m_state->path = ExtendedPath(path);
    while (m_state->path.ends_with(L'\\')) m_state->path.pop_back();
    std::vector<OwnedHandle> held;
    return HoldFolder(m_state->path + L'\\', false, held);
}

std::string DestinationFolder::Create(const std::vector<std::string>& components,
                                      std::unique_ptr<NewFile>& file) {
    std::vector<OwnedHandle> held;
    std::wstring path = m_state->path;
    std::string fault = HoldFolder(path + L'\\', false, held);
    for (std::size_t i = 0; i + 1 < components.size() && fault.empty(); ++i) {
        path += L'\\' + StringUtils::NarrowStringToWide(components[i]);
        if (!::CreateDirectoryW(path.c_str(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS)
            return LastFault();
        fault = HoldFolder(path, true, held);
    }
    if (!fault.empty()) return fault;
    auto made = std::make_unique<WindowsNewFile>(std::move(held), path, components.back());
    fault = made->Open();
    if (fault.empty()) file = std::move(made);
    return fault;
}

std::int64_t SourceFile::Size() const {
    LARGE_INTEGER size = {};
    return ::GetFileSizeEx(m_state->file.Get(), &size) != 0 ? size.QuadPart : -1;
}

std::string DestinationFolder::OpenExisting(const std::vector<std::string>& components, SourceFile& file) {
    std::vector<OwnedHandle> held;
    std::wstring path = m_state->path;
    std::string fault = HoldFolder(path + L'\\', false, held);
    for (std::size_t i = 0; i + 1 < components.size() && fault.empty(); ++i) {
        path += L'\\' + StringUtils::NarrowStringToWide(components[i]);
        fault = HoldFolder(path, true, held);
    }
    if (!fault.empty()) return fault;
    path += L'\\' + StringUtils::NarrowStringToWide(components.back());
    OwnedHandle found(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (!found.IsOpen() || !::GetFileInformationByHandle(found.Get(), &facts)) return LastFault();
    if ((facts.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0)
        return "not a regular file";
    file.m_state->file = std::move(found);
    return {};
}

bool DestinationFolder::Sync() { return false; }

}  // namespace quillon::agent
