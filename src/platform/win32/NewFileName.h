#pragma once

#include <string>

#include "platform/Handle.h"

namespace quillon::platform {

/// What a new file and a moved one do before they take a name. Paths are extended ones.

/// Whether the name is free, or the file that has it can be replaced, if `replaces`; ERROR_ACCESS_DENIED for
/// a directory and a read-only file.
bool CanReplace(const std::wstring& path, bool replaces);
/// Gives an open file the owner, as far as the process may, and the access of the file that has the path; one
/// that is missing or a link has none to give.
bool TakeSecurityOf(const std::wstring& path, const FileHandle& file);

}  // namespace quillon::platform
