#include "platform/win32/OpenFile.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// FileDispositionInfoEx, which the headers of MinGW hide.
constexpr auto kFileDispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);

template <class Information>
bool Set(const FileHandle& file, FILE_INFO_BY_HANDLE_CLASS kind, Information information) {
    return ::SetFileInformationByHandle(file.Get(), kind, &information, sizeof information) != 0;
}

std::optional<DWORD> AttributesOf(const FileHandle& file) {
    FILE_BASIC_INFO facts{};
    if (::GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &facts, sizeof facts) == 0)
        return std::nullopt;
    return facts.FileAttributes;
}

}  // namespace

std::optional<FileIdentity> IdentityOf(const FileHandle& file) {
    BY_HANDLE_FILE_INFORMATION facts{};
    if (::GetFileInformationByHandle(file.Get(), &facts) == 0) return std::nullopt;
    return FileIdentity{facts.dwVolumeSerialNumber,
                        (std::uint64_t{facts.nFileIndexHigh} << 32) | facts.nFileIndexLow};
}

bool RemoveOpen(const FileHandle& file) {
    // The name is free at once, whoever else has the file open; not every file system knows it.
    const FILE_DISPOSITION_INFO_EX atOnce{FILE_DISPOSITION_FLAG_DELETE |
                                          FILE_DISPOSITION_FLAG_POSIX_SEMANTICS};
    return Set(file, kFileDispositionInfoEx, atOnce) ||
           Set(file, FileDispositionInfo, FILE_DISPOSITION_INFO{TRUE});
}

std::optional<bool> IsReadOnly(const FileHandle& file) {
    const auto attributes = AttributesOf(file);
    if (!attributes) return std::nullopt;
    return (*attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

bool SetReadOnly(const FileHandle& file, bool isReadOnly) {
    const auto attributes = AttributesOf(file);
    if (!attributes) return false;
    FILE_BASIC_INFO facts{};  // what is 0 stays, so it may not become that
    facts.FileAttributes =
        isReadOnly ? *attributes | FILE_ATTRIBUTE_READONLY : *attributes & ~DWORD{FILE_ATTRIBUTE_READONLY};
    if (facts.FileAttributes == 0) facts.FileAttributes = FILE_ATTRIBUTE_NORMAL;
    return Set(file, FileBasicInfo, facts);
}

}  // namespace quillon::platform
