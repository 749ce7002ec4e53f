#include "system/ContentFiles.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <set>
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

/// Links and junctions lead elsewhere; other reparse points, such as a cloud provider's, are the content
/// itself.
bool LeadsElsewhere(const OwnedHandle& folder) {
    FILE_ATTRIBUTE_TAG_INFO facts = {};
    if (!::GetFileInformationByHandleEx(folder.Get(), FileAttributeTagInfo, &facts, sizeof facts))
        return true;
    return (facts.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           IsReparseTagNameSurrogate(facts.ReparseTag);
}

std::wstring FinalPath(const OwnedHandle& folder) {
    std::wstring path(MAX_PATH, L'\0');
    for (DWORD length = 0;; path.resize(length)) {
        length = ::GetFinalPathNameByHandleW(folder.Get(), path.data(), static_cast<DWORD>(path.size()),
                                             VOLUME_NAME_DOS);
        if (length < path.size()) return path.substr(0, length);
    }
}

/// Whether a directory lies in the one that is held: an empty directory can be turned into a junction in
/// place while it is open, and the path then leads through it.
bool LiesIn(const OwnedHandle& parent, const std::wstring& name, const OwnedHandle& folder) {
    std::wstring expected = FinalPath(parent);
    if (!expected.ends_with(L'\\')) expected += L'\\';
    const std::wstring found = FinalPath(folder);
    return found.size() == expected.size() + name.size() && found.starts_with(expected) &&
           ::CompareStringOrdinal(found.c_str() + expected.size(), -1, name.c_str(), -1, TRUE) == CSTR_EQUAL;
}

/// A directory that, held open, can be neither renamed nor replaced. `isBelow`: a link is refused, and so is
/// what does not lie in the directory that is held already.
std::string HoldFolder(const std::wstring& path, bool isBelow, std::vector<OwnedHandle>& held) {
    const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | (isBelow ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
    OwnedHandle folder(::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES | FILE_LIST_DIRECTORY,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, flags,
                                     nullptr));
    if (!folder.IsOpen()) return LastFault();
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (!::GetFileInformationByHandle(folder.Get(), &facts)) return LastFault();
    const bool isFolder = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const std::wstring name = path.substr(path.rfind(L'\\') + 1);
    if (!isFolder || (isBelow && (LeadsElsewhere(folder) || !LiesIn(held.back(), name, folder))))
        return "a link or a file stands in the place of a folder";
    held.push_back(std::move(folder));
    return {};
}

/// Removes the temporary files that no process has open any more: those of a download that was killed.
void RemoveLeftovers(const std::wstring& folder) {
    WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW((folder + L"\\.quillon-*.part").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        if (!IsTemporaryName(StringUtils::WideStringToNarrow(found.cFileName))) continue;
        const OwnedHandle file(
            ::CreateFileW((folder + L'\\' + found.cFileName).c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                          FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    } while (::FindNextFileW(search, &found));
    ::FindClose(search);
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
        // It is held until it has its name, by which it is told from the leftover of a killed process.
        m_file = OwnedHandle(::CreateFileW(m_temporary.c_str(), GENERIC_WRITE, FILE_SHARE_DELETE, nullptr,
                                           CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
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
        if (!::MoveFileExW(m_temporary.c_str(), m_path.c_str(),
                           MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return LastFault();
        m_isThere = false;
        m_file.Close();
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
    std::set<std::wstring> swept;  ///< directories that hold no leftovers any more
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
    if (m_state->swept.insert(path).second) RemoveLeftovers(path);
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
