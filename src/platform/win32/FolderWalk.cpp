#include "platform/FolderWalk.h"
#include "platform/ErrorText.h"

#include <cstddef>
#include <string_view>
#include <vector>

#include "base/PathEscapes.h"
#include "platform/win32/FinalPath.h"
#include "platform/win32/FoundEntry.h"
#include "platform/win32/OpenFile.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// The directory itself, never where a link in its place leads.
FileHandle OpenFolder(const std::wstring& path, FolderWalk::Purpose purpose, bool throughLink) {
    const DWORD share =
        FILE_SHARE_READ | FILE_SHARE_WRITE | (purpose == FolderWalk::Purpose::ToList ? FILE_SHARE_DELETE : 0);
    const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | (throughLink ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
    FileHandle folder(
        ::CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, share, nullptr, OPEN_EXISTING, flags, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!folder || ::GetFileInformationByHandle(folder.Get(), &information) == 0) return {};
    const bool isFolder = (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isReparsePoint = (information.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (isFolder && (throughLink || !isReparsePoint || !IsLink(folder))) return folder;
    FailWithCode(ERROR_DIRECTORY);
    return {};
}

constexpr DWORD kListingSize = 64 << 10;

FoundEntry Facts(const FILE_FULL_DIR_INFO& found) {
    return {std::wstring_view(found.FileName, found.FileNameLength / sizeof(wchar_t)),
            found.FileAttributes,
            found.EaSize,  // of what is a reparse point the tag
            found.EndOfFile.QuadPart,
            found.LastWriteTime.QuadPart,
            found.LastAccessTime.QuadPart,
            found.CreationTime.QuadPart};
}

void VisitPiece(const std::byte* place, const std::function<void(DirectoryEntry&&)>& visit) {
    for (;;) {
        const auto& found = *reinterpret_cast<const FILE_FULL_DIR_INFO*>(place);
        const FoundEntry facts = Facts(found);
        if (facts.name != L"." && facts.name != L"..") visit(ToEntry(facts));
        if (found.NextEntryOffset == 0) return;
        place += found.NextEntryOffset;
    }
}

}  // namespace

struct FolderWalk::State {
    struct Level {
        FileHandle handle;
        std::wstring finalPath;  ///< with its trailing backslash; empty when it is not told
        std::size_t pathLength = 0;
    };

    explicit State(Purpose chosen) : purpose(chosen) {}

    /// Goes to a directory: the start, or the path with a name behind it.
    bool Push(const std::wstring& folder, bool throughLink);
    [[nodiscard]] bool LiesHere(const std::wstring& finalName, const std::wstring& name) const;
    bool Remove(const std::string& name, bool isDirectory);

    const Purpose purpose;
    DWORD volumeName = VOLUME_NAME_DOS;  ///< of final paths; the kernel's where the volume has no drive
    std::wstring path;                   ///< with its trailing backslash
    std::vector<Level> levels;
};

bool FolderWalk::State::Push(const std::wstring& folder, bool throughLink) {
    Level level{OpenFolder(folder, purpose, throughLink), {}, path.size()};
    if (!level.handle) return false;
    level.finalPath = FinalPath(level.handle, volumeName);
    if (level.finalPath.empty() && levels.empty()) {
        volumeName = VOLUME_NAME_NT;
        level.finalPath = FinalPath(level.handle, volumeName);
    }
    // Only a walk that erases needs the final path, for it must not be led out of its tree.
    if (purpose == Purpose::ToErase) {
        if (level.finalPath.empty()) return false;
        if (!levels.empty() && !LiesHere(level.finalPath, folder.substr(path.size())))
            return FailWithCode(ERROR_DIRECTORY);
    }
    if (!level.finalPath.empty() && !level.finalPath.ends_with(L'\\')) level.finalPath.push_back(L'\\');
    // The start's path by its drive has no limit of 260 characters, nor what is below it.
    const bool isUnlimited = levels.empty() && level.finalPath.starts_with(L"\\\\?\\");
    path = isUnlimited ? level.finalPath : folder;
    if (!path.ends_with(L'\\') && !path.ends_with(L'/')) path.push_back(L'\\');
    levels.push_back(std::move(level));
    return true;
}

/// Returns whether what is open lies in the open directory under the name: that directory may have been
/// turned into a link in place, which holding it open does not prevent.
bool FolderWalk::State::LiesHere(const std::wstring& finalName, const std::wstring& name) const {
    return finalName == levels.back().finalPath + name;
}

/// Removes by handle, and only an entry that lies in the open directory.
bool FolderWalk::State::Remove(const std::string& name, bool isDirectory) {
    const auto wideName = WideName(name);
    if (!wideName) return false;
    const FileHandle file(::CreateFileW((path + *wideName).c_str(), DELETE | FILE_READ_ATTRIBUTES, kShareAll,
                                        nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!file || ::GetFileInformationByHandle(file.Get(), &information) == 0) return false;
    if (((information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) != isDirectory) {
        return FailWithCode(isDirectory ? ERROR_DIRECTORY : ERROR_ACCESS_DENIED);
    }
    if (!LiesHere(FinalPath(file, volumeName), *wideName)) return FailWithCode(ERROR_ACCESS_DENIED);
    return RemoveOpen(file);
}

void FolderWalk::Drop::operator()(State* state) const noexcept { delete state; }

std::optional<FolderWalk> FolderWalk::Open(const std::string& folder, Purpose purpose) {
    OwnState state(new State(purpose));
    auto path = WidePath(folder);
    if (!path) return std::nullopt;
    if (path->ends_with(L':')) path->push_back(L'\\');  // a drive's root, not its current folder
    if (!state->Push(*path, purpose == Purpose::ToList)) return std::nullopt;
    return FolderWalk(std::move(state));
}

/// By the open directory: its path may lead elsewhere by now.
bool FolderWalk::List(const std::function<void(DirectoryEntry&&)>& visit, Detail) {
    std::vector<std::uint64_t> piece(kListingSize / sizeof(std::uint64_t));
    auto kind = FileFullDirectoryRestartInfo;
    while (::GetFileInformationByHandleEx(m_state->levels.back().handle.Get(), kind, piece.data(),
                                          kListingSize) != 0) {
        VisitPiece(reinterpret_cast<const std::byte*>(piece.data()), visit);
        kind = FileFullDirectoryInfo;
    }
    const DWORD code = ::GetLastError();
    return code == ERROR_NO_MORE_FILES || code == ERROR_FILE_NOT_FOUND;  // the root of an empty drive
}

std::optional<std::uint64_t> FolderWalk::SizeOf(const std::string& name) const {
    return SizeOfFile(base::PathToUtf8(m_state->path) + name);
}

bool FolderWalk::RemoveFile(const std::string& name) { return m_state->Remove(name, false); }

bool FolderWalk::RemoveEmptyDirectory(const std::string& name) { return m_state->Remove(name, true); }

bool FolderWalk::Enter(const std::string& name) {
    const auto wideName = WideName(name);
    return wideName && m_state->Push(m_state->path + *wideName, false);
}

bool FolderWalk::Leave() {
    if (m_state->levels.size() < 2) return FailWithCode(ERROR_PATH_NOT_FOUND);
    m_state->path.resize(m_state->levels.back().pathLength);
    m_state->levels.pop_back();
    return true;
}

}  // namespace quillon::platform
