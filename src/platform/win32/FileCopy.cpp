#include <string>

#include "platform/FileApi.h"
#include "platform/win32/NewFileName.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

bool Fail(DWORD code) {
    ::SetLastError(code);
    return false;
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
    bool Make(const std::wstring& source) {
        m_isThere = ::CopyFileExW(source.c_str(), m_path.c_str(), nullptr, nullptr, nullptr,
                                  COPY_FILE_FAIL_IF_EXISTS) != 0;
        return m_isThere && Open();
    }

    bool Commit(const std::wstring& target, bool replaces) {
        if (replaces && !TakeSecurityOf(target, m_file)) return false;
        if (::FlushFileBuffers(m_file.Get()) == 0 || !GiveName(m_file, target, replaces)) return false;
        m_isThere = false;
        FILE_BASIC_INFO facts{};
        facts.FileAttributes = m_attributes;
        if ((m_attributes & FILE_ATTRIBUTE_READONLY) != 0)
            ::SetFileInformationByHandle(m_file.Get(), FileBasicInfo, &facts, sizeof facts);
        return ::FlushFileBuffers(m_file.Get()) != 0;
    }

private:
    /// A read-only file can be neither flushed nor removed.
    bool Open() {
        m_attributes = ::GetFileAttributesW(m_path.c_str());
        if (m_attributes == INVALID_FILE_ATTRIBUTES) return false;
        if ((m_attributes & FILE_ATTRIBUTE_READONLY) != 0)
            ::SetFileAttributesW(m_path.c_str(), m_attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
        m_file = OpenNewFile(m_path, OPEN_EXISTING);
        if (!m_file) return false;
        return (m_attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 || !IsLink(m_file) ||
               Fail(ERROR_ACCESS_DENIED);
    }

    const std::wstring m_path;
    FileHandle m_file;
    DWORD m_attributes = 0;
    bool m_isThere = false;
};

bool CopyTo(const std::wstring& source, const std::wstring& target, bool replaces) {
    if (!CanReplace(target, replaces)) return false;
    Copy copy(TemporaryNameBeside(target));
    return copy.Make(source) && copy.Commit(target, replaces);
}

/// A read-only file as well.
bool RemoveOriginal(const std::wstring& path, DWORD attributes) {
    const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isReadOnly) ::SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    if (::DeleteFileW(path.c_str()) != 0) return true;
    const DWORD code = ::GetLastError();
    if (isReadOnly) ::SetFileAttributesW(path.c_str(), attributes);
    return Fail(code);
}

bool MoveToOtherVolume(const std::string& from, const std::string& to, bool replaces) {
    const auto source = ExtendedPath(from), target = ExtendedPath(to);
    if (!source || !target) return false;
    const auto kind = AttributesOf(from);
    if (!kind || kind->isDirectory || kind->isLink) return Fail(ERROR_NOT_SAME_DEVICE);
    const DWORD attributes = ::GetFileAttributesW(source->c_str());
    if (!CopyTo(*source, *target, replaces)) return false;
    if (RemoveOriginal(*source, attributes)) return true;
    const DWORD code = ::GetLastError();
    if (!replaces) ::DeleteFileW(target->c_str());  // the name was free
    return Fail(code);
}

}  // namespace

bool CopyFileOver(const std::string& from, const std::string& to) {
    const auto source = ExtendedPath(from), target = ExtendedPath(to);
    if (!source || !target) return false;
    const auto original = IdentityOf(from);
    if (original && original == IdentityOf(to)) return Fail(ERROR_SHARING_VIOLATION);
    return CopyTo(*source, *target, true);
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
