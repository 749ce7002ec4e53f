#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/NewFile.h"
#include "platform/win32/FinalPath.h"
#include "platform/win32/NewFileName.h"
#include "platform/win32/OpenFile.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// A file that is copied: open, and as it was when it was opened.
struct Source {
    bool Open(const std::string& path);

    std::wstring path;
    FileHandle file;
    FileIdentity identity;
    FILE_BASIC_INFO facts{};
};

bool Source::Open(const std::string& libraryPath) {
    auto extended = ExtendedPath(libraryPath);
    if (!extended) return false;
    path = *std::move(extended);
    file = OpenForReading(libraryPath);
    const auto found = file ? IdentityOf(file) : std::nullopt;
    if (!found) return false;
    identity = *found;
    return ::GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &facts, sizeof facts) != 0;
}

FileHandle OpenStream(const std::wstring& path, DWORD access, DWORD disposition) {
    return FileHandle(::CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition,
                                    FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

void CopyStream(const Source& source, const std::wstring& name, const FileHandle& target) {
    const FileHandle from = OpenStream(source.path + name, GENERIC_READ, OPEN_EXISTING);
    if (!from || IdentityOf(from) != source.identity) return;
    const FileHandle to = OpenStream(FinalPath(target, VOLUME_NAME_DOS) + name, GENERIC_WRITE, CREATE_ALWAYS);
    if (to && IdentityOf(to) == IdentityOf(target)) CopyContent(from, to);
}

/// Copies the streams that have names, such as the one that tells where a download came from. Not every file
/// system has some, and the content is whole without them.
void CopyStreams(const Source& source, const FileHandle& target) {
    WIN32_FIND_STREAM_DATA found{};
    const HANDLE search = ::FindFirstStreamW(source.path.c_str(), FindStreamInfoStandard, &found, 0);
    if (search == INVALID_HANDLE_VALUE) return;
    constexpr std::wstring_view kContent = L"::$DATA";
    do {
        if (found.cStreamName != kContent) CopyStream(source, found.cStreamName, target);
    } while (::FindNextStreamW(search, &found) != 0);
    ::FindClose(search);
}

/// Gives the copy what the system's own takes along in addition to the content; it is not read-only yet.
bool TakeFacts(const Source& source, const FileHandle& target) {
    constexpr DWORD kKept =
        FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    FILE_BASIC_INFO facts{};  // what is 0 stays
    facts.LastWriteTime = source.facts.LastWriteTime;
    facts.FileAttributes = (source.facts.FileAttributes & kKept) | FILE_ATTRIBUTE_ARCHIVE;
    return ::SetFileInformationByHandle(target.Get(), FileBasicInfo, &facts, sizeof facts) != 0;
}

/// The copy of a file that is moved has the rights of that one, any other those of the file it replaces.
enum class Rights { OfSource, OfTarget };

/// Returns the copy, which nobody else can open, move or remove while it is held.
std::optional<NewFile> CopyTo(const Source& source, const std::string& to, NewFile::IfThere ifThere,
                              Rights rights) {
    const auto has = [&source](DWORD attribute) { return (source.facts.FileAttributes & attribute) != 0; };
    // What is encrypted must not come to lie beside it as plain content.
    auto target = NewFile::Create(
        to, ifThere, has(FILE_ATTRIBUTE_ENCRYPTED) ? NewFile::Access::Encrypted : NewFile::Access::OwnerOnly);
    if (!target) return std::nullopt;
    const FileHandle& file = target->Handle();
    const bool isOwned =
        rights == Rights::OfSource ? TakeSecurityOf(source.path, file) : target->TakeSecurity();
    if (!isOwned || !CopyContent(source.file, file)) return std::nullopt;
    CopyStreams(source, file);
    if (!TakeFacts(source, file) || !target->Commit()) return std::nullopt;
    if (has(FILE_ATTRIBUTE_READONLY) && !SetReadOnly(file, true)) return std::nullopt;
    return target;
}

/// Opens what has the name, be it a link, so that it can be removed.
FileHandle OpenToRemove(const std::wstring& path) {
    constexpr DWORD kAccess = DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
    return FileHandle(::CreateFileW(path.c_str(), kAccess, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

/// Removes a file, also when it is read-only; on failure it stays so.
bool RemoveWhatever(const FileHandle& file) {
    const bool isReadOnly = IsReadOnly(file).value_or(false);
    if (isReadOnly && !SetReadOnly(file, false)) return false;
    if (RemoveOpen(file)) return true;
    const DWORD code = ::GetLastError();
    if (isReadOnly) SetReadOnly(file, true);
    return FailWithCode(code);
}

/// Removes the original of a copy, unless something else has its name by now.
bool RemoveOriginal(const std::wstring& path, const FileIdentity& identity) {
    const FileHandle file = OpenToRemove(path);
    if (!file) return false;
    if (IdentityOf(file) != identity) return FailWithCode(ERROR_SHARING_VIOLATION);
    return RemoveWhatever(file);
}

bool MoveToOtherVolume(const std::string& from, const std::string& to, NewFile::IfThere ifThere) {
    const auto kind = AttributesOf(from);
    if (!kind || kind->isDirectory || kind->isLink) return FailWithCode(ERROR_NOT_SAME_DEVICE);
    const auto original = ExtendedPath(from);
    // Nothing is replaced for a move that cannot end.
    if (!original || !OpenToRemove(*original)) return false;
    // What is written to it meanwhile would be removed with it.
    const FileHandle withoutWriters(::CreateFileW(original->c_str(), GENERIC_READ,
                                                  FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                                  FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!withoutWriters) return false;
    Source source;
    if (!source.Open(from)) return false;
    if (IdentityOf(from) != source.identity) return FailWithCode(ERROR_SHARING_VIOLATION);  // a link by now
    const auto copy = CopyTo(source, to, ifThere, Rights::OfSource);
    if (!copy) return false;
    source.file.Reset();
    if (RemoveOriginal(source.path, source.identity)) return true;
    const DWORD code = ::GetLastError();
    if (ifThere == NewFile::IfThere::Fail) RemoveWhatever(copy->Handle());  // the name was free
    return FailWithCode(code);
}

}  // namespace

bool CopyFileOver(const std::string& from, const std::string& to) {
    Source source;
    if (!source.Open(from)) return false;
    if (IdentityOf(to) == source.identity) return FailWithCode(ERROR_SHARING_VIOLATION);
    return CopyTo(source, to, NewFile::IfThere::Replace, Rights::OfTarget).has_value();
}

bool MovePath(const std::string& from, const std::string& to) {
    const auto source = WidePath(from), target = WidePath(to);
    if (!source || !target) return false;
    if (::MoveFileExW(source->c_str(), target->c_str(), 0) != 0) return true;
    return ::GetLastError() == ERROR_NOT_SAME_DEVICE && MoveToOtherVolume(from, to, NewFile::IfThere::Fail);
}

bool MoveOverFile(const std::string& from, const std::string& to) {
    const auto source = WidePath(from), target = WidePath(to);
    if (!source || !target || !CanReplace(*target, true)) return false;
    constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    if (::MoveFileExW(source->c_str(), target->c_str(), kFlags) != 0) return true;
    return ::GetLastError() == ERROR_NOT_SAME_DEVICE &&
           MoveToOtherVolume(from, to, NewFile::IfThere::Replace);
}

}  // namespace quillon::platform
