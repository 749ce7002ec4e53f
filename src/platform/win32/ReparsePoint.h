#pragma once

#include "platform/Handle.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// Whether something leads elsewhere, as links and junctions do. Most reparse points
/// do not: files that a cloud provider holds, compressed or deduplicated ones.
inline bool IsLink(DWORD attributes, DWORD reparseTag) {
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(reparseTag);
}

/// Returns whether a file that was opened as the reparse point itself is a link. One that the system says
/// nothing about counts as a link.
inline bool IsLink(const FileHandle& file) {
    FILE_ATTRIBUTE_TAG_INFO info{};
    if (::GetFileInformationByHandleEx(file.Get(), FileAttributeTagInfo, &info, sizeof info) == 0)
        return true;
    return IsLink(info.FileAttributes, info.ReparseTag);
}

}  // namespace quillon::platform
