#include <string>

#include "platform/FileApi.h"
#include "platform/win32/NewFileName.h"
#include "platform/win32/OpenFile.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

bool Fail(DWORD code) {
    ::SetLastError(code);
    return false;
}

/// A file that is copied, as it is when the copy begins: it may grow meanwhile.
struct Source {
    bool Look(const std::wstring& path);

    FileIdentity identity;
    LONGLONG size = 0;
    LARGE_INTEGER modified{};
};

bool Source::Look(const std::wstring& path) {
    const FileHandle file(
        ::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    const auto found = file ? IdentityOf(file) : std::nullopt;
    LARGE_INTEGER length{};
    FILE_BASIC_INFO facts{};
    if (!found || ::GetFileSizeEx(file.Get(), &length) == 0 ||
        ::GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &facts, sizeof facts) == 0)
        return false;
    identity = *found;
    size = length.QuadPart;
    modified = facts.LastWriteTime;
    return true;
}

/// Ends a copy whose source has grown past the size that it had, for it could grow for ever.
DWORD CALLBACK StopPast(LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER done, DWORD stream, DWORD,
                        HANDLE, HANDLE, void* limit) {
    constexpr DWORD kContent = 1;
    const bool isPast = stream == kContent && done.QuadPart > *static_cast<const LONGLONG*>(limit);
    return isPast ? PROGRESS_STOP : PROGRESS_CONTINUE;
}

/// A copy under a temporary name, which is removed unless it was given its own.
class Copy {
public:
    explicit Copy(std::wstring path) : m_path(std::move(path)) {}
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy() {
        if (!m_isThere) return;
        const DWORD code = ::GetLastError();
        m_file.Reset();
        ::DeleteFileW(m_path.c_str());
        ::SetLastError(code);
    }

    /// Has the system copy the file with its attributes, times and streams.
    bool Make(const std::wstring& path, Source source) {
        m_isThere = ::CopyFileExW(path.c_str(), m_path.c_str(), &StopPast, &source.size, nullptr,
                                  COPY_FILE_FAIL_IF_EXISTS) != 0 ||
                    ::GetLastError() == ERROR_REQUEST_ABORTED;
        return m_isThere && Open() && Cut(source);
    }

    bool Commit(const std::wstring& target, bool replaces) {
        if (replaces && !TakeSecurityOf(target, m_file)) return false;
        if (::FlushFileBuffers(m_file.Get()) == 0 || !GiveName(m_file, target, replaces)) return false;
        m_isThere = false;
        if (m_isReadOnly) SetReadOnly(m_file, true);
        return ::FlushFileBuffers(m_file.Get()) != 0;
    }

private:
    /// A read-only file can be neither flushed nor removed.
    bool MakeWritable() {
        const FileHandle file(::CreateFileW(m_path.c_str(), FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                                            kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT,
                                            nullptr));
        const auto isReadOnly = file ? IsReadOnly(file) : std::nullopt;
        m_isReadOnly = isReadOnly.value_or(false);
        return isReadOnly && (!m_isReadOnly || SetReadOnly(file, false));
    }

    bool Open() {
        if (!MakeWritable()) return false;
        m_file = OpenNewFile(m_path, OPEN_EXISTING);
        return m_file && (!IsLink(m_file) || Fail(ERROR_ACCESS_DENIED));
    }

    /// Takes off what the source has grown by.
    bool Cut(const Source& source) {
        const auto size = SizeOfOpenFile(m_file);
        if (!size) return false;
        if (static_cast<LONGLONG>(*size) <= source.size) return true;
        FILE_END_OF_FILE_INFO end{};
        end.EndOfFile.QuadPart = source.size;
        FILE_BASIC_INFO facts{};  // what is 0 stays
        facts.LastWriteTime = source.modified;
        return ::SetFileInformationByHandle(m_file.Get(), FileEndOfFileInfo, &end, sizeof end) != 0 &&
               ::SetFileInformationByHandle(m_file.Get(), FileBasicInfo, &facts, sizeof facts) != 0;
    }

    const std::wstring m_path;
    FileHandle m_file;
    bool m_isReadOnly = false;
    bool m_isThere = false;
};

bool CopyTo(const std::wstring& path, const Source& source, const std::wstring& target, bool replaces) {
    if (!CanReplace(target, replaces)) return false;
    Copy copy(TemporaryNameBeside(target));
    return copy.Make(path, source) && copy.Commit(target, replaces);
}

/// Removes the original of a copy, a read-only one as well, unless something else has its name by now.
bool RemoveOriginal(const std::wstring& path, const FileIdentity& identity) {
    constexpr DWORD kAccess = DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
    const FileHandle file(::CreateFileW(path.c_str(), kAccess, kShareAll, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!file) return false;
    if (IdentityOf(file) != identity) return Fail(ERROR_SHARING_VIOLATION);
    const bool isReadOnly = IsReadOnly(file).value_or(false);
    if (isReadOnly && !SetReadOnly(file, false)) return false;
    if (RemoveOpen(file)) return true;
    const DWORD code = ::GetLastError();
    if (isReadOnly) SetReadOnly(file, true);
    return Fail(code);
}

bool MoveToOtherVolume(const std::string& from, const std::string& to, bool replaces) {
    const auto path = ExtendedPath(from), target = ExtendedPath(to);
    if (!path || !target) return false;
    const auto kind = AttributesOf(from);
    if (!kind || kind->isDirectory || kind->isLink) return Fail(ERROR_NOT_SAME_DEVICE);
    Source source;
    if (!source.Look(*path) || !CopyTo(*path, source, *target, replaces)) return false;
    if (RemoveOriginal(*path, source.identity)) return true;
    const DWORD code = ::GetLastError();
    if (!replaces) ::DeleteFileW(target->c_str());  // the name was free
    return Fail(code);
}

}  // namespace

bool CopyFileOver(const std::string& from, const std::string& to) {
    const auto path = ExtendedPath(from), target = ExtendedPath(to);
    if (!path || !target) return false;
    const auto original = IdentityOf(from);
    if (original && original == IdentityOf(to)) return Fail(ERROR_SHARING_VIOLATION);
    Source source;
    return source.Look(*path) && CopyTo(*path, source, *target, true);
}

bool MovePath(const std::string& from, const std::string& to) {
    const auto source = WidePath(from), target = WidePath(to);
    if (!source || !target) return false;
    if (::MoveFileExW(source->c_str(), target->c_str(), 0) != 0) return true;
    return ::GetLastError() == ERROR_NOT_SAME_DEVICE && MoveToOtherVolume(from, to, false);
}

bool MoveOverFile(const std::string& from, const std::string& to) {
    const auto source = WidePath(from), target = WidePath(to);
    if (!source || !target || !CanReplace(*target, true)) return false;
    constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    if (::MoveFileExW(source->c_str(), target->c_str(), kFlags) != 0) return true;
    return ::GetLastError() == ERROR_NOT_SAME_DEVICE && MoveToOtherVolume(from, to, true);
}

}  // namespace quillon::platform
