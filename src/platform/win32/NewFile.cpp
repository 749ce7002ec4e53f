#include "platform/NewFile.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/win32/NewFileName.h"
#include "platform/win32/OpenFile.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// Who owns it, and who may use it, exactly as it is kept: SetSecurityInfo() would replace what was inherited
/// by what the directory gives now. That may let more users in where the old file came from another
/// directory.
class Security {
public:
    bool Read(const FileHandle& file);
    [[nodiscard]] bool Give(const FileHandle& file);

private:
    std::vector<unsigned char> m_descriptor;
};

bool Security::Read(const FileHandle& file) {
    constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    ::GetKernelObjectSecurity(file.Get(), kParts, nullptr, 0, &size);
    m_descriptor.resize(size);
    if (::GetKernelObjectSecurity(file.Get(), kParts, m_descriptor.data(), size, &size) == 0) return false;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    const bool followsDirectory =
        ::GetSecurityDescriptorControl(m_descriptor.data(), &control, &revision) != 0 &&
        (control & SE_DACL_AUTO_INHERITED) != 0;
    // Otherwise the system drops the flag.
    constexpr SECURITY_DESCRIPTOR_CONTROL kAsked = SE_DACL_AUTO_INHERIT_REQ;
    return !followsDirectory || ::SetSecurityDescriptorControl(m_descriptor.data(), kAsked, kAsked) != 0;
}

/// Another owner can be set by few processes only, and is not asked for.
bool Security::Give(const FileHandle& file) {
    ::SetKernelObjectSecurity(file.Get(), OWNER_SECURITY_INFORMATION, m_descriptor.data());
    return ::SetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, m_descriptor.data()) != 0;
}

/// Opens what has the name, be it a link.
FileHandle OpenItself(const std::wstring& path, DWORD access) {
    return FileHandle(::CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

/// For its maker alone, with every right that the following steps need: nobody else opens it before its
/// rights are those that it shall have.
FileHandle MakeFile(const std::wstring& path, DWORD attributes) {
    constexpr DWORD kAccess = GENERIC_READ | GENERIC_WRITE | DELETE | WRITE_DAC;
    const DWORD flags = attributes | FILE_FLAG_WRITE_THROUGH | FILE_FLAG_OPEN_REPARSE_POINT;
    FileHandle file(
        ::CreateFileW(path.c_str(), kAccess | WRITE_OWNER, 0, nullptr, CREATE_NEW, flags, nullptr));
    if (!file && ::GetLastError() == ERROR_ACCESS_DENIED)  // its owner need not be his to give
        file.Reset(::CreateFileW(path.c_str(), kAccess, 0, nullptr, CREATE_NEW, flags, nullptr));
    return file;
}

/// Moves the open file itself: what has its old name does not count.
bool GiveName(const FileHandle& file, const std::wstring& path, bool replaces) {
    const std::size_t bytes = path.size() * sizeof(wchar_t);
    std::vector<std::max_align_t> memory((sizeof(FILE_RENAME_INFO) + bytes) / sizeof(std::max_align_t) + 1);
    auto* const info = ::new (memory.data()) FILE_RENAME_INFO{};
    info->ReplaceIfExists = replaces ? TRUE : FALSE;
    info->FileNameLength = static_cast<DWORD>(bytes);
    std::memcpy(info->FileName, path.c_str(), bytes + sizeof(wchar_t));
    return ::SetFileInformationByHandle(file.Get(), FileRenameInfo, info,
                                        static_cast<DWORD>(sizeof(FILE_RENAME_INFO) + bytes)) != 0;
}

}  // namespace

bool CanReplace(const std::wstring& path, bool replaces) {
    const DWORD bits = ::GetFileAttributesW(path.c_str());
    if (bits == INVALID_FILE_ATTRIBUTES) return ::GetLastError() == ERROR_FILE_NOT_FOUND;
    if (!replaces) return FailWithCode(ERROR_ALREADY_EXISTS);
    constexpr DWORD kRefused = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
    return (bits & kRefused) == 0 || FailWithCode(ERROR_ACCESS_DENIED);
}

bool TakeSecurityOf(const std::wstring& path, const FileHandle& file) {
    const FileHandle old = OpenItself(path, READ_CONTROL | FILE_READ_ATTRIBUTES);
    if (!old) return ::GetLastError() == ERROR_FILE_NOT_FOUND;
    BY_HANDLE_FILE_INFORMATION facts{};
    if (::GetFileInformationByHandle(old.Get(), &facts) == 0) return false;
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLink(old)) return true;
    Security security;
    return security.Read(old) && security.Give(file);
}

struct NewFile::State {
    std::wstring path;
    FileHandle file;
    IfThere ifThere = IfThere::Replace;
    bool isThere = false;  ///< under its temporary name
};

void NewFile::Drop::operator()(State* state) const noexcept {
    const DWORD code = ::GetLastError();
    if (state->isThere) RemoveOpen(state->file);
    delete state;
    ::SetLastError(code);
}

std::optional<NewFile> NewFile::Create(const std::string& path, IfThere ifThere, Access access) {
    auto full = ExtendedPath(path);
    if (!full || !CanReplace(*full, ifThere == IfThere::Replace)) return std::nullopt;
    OwnState state(new State);
    const std::wstring temporary = full->substr(0, full->rfind(L'\\') + 1) + base::ToWide(NewFileName());
    state->path = *std::move(full);
    state->ifThere = ifThere;
    state->file =
        MakeFile(temporary, access == Access::Encrypted ? FILE_ATTRIBUTE_ENCRYPTED : FILE_ATTRIBUTE_NORMAL);
    if (!state->file) return std::nullopt;
    state->isThere = true;
    return NewFile(std::move(state));
}

const FileHandle& NewFile::Handle() const { return m_state->file; }

bool NewFile::TakeSecurity() { return TakeSecurityOf(m_state->path, m_state->file); }

bool NewFile::Commit() {
    State& state = *m_state;
    if (::FlushFileBuffers(state.file.Get()) == 0) return false;
    if (!GiveName(state.file, state.path, state.ifThere == IfThere::Replace)) return false;
    state.isThere = false;
    return ::FlushFileBuffers(state.file.Get()) != 0;
}

}  // namespace quillon::platform
