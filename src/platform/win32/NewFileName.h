#pragma once

#include <string>

#include "platform/Handle.h"

namespace quillon::platform {

/// The steps by which a new file takes its name. Paths are extended ones.

/// A new name of the form ".quillon-XXXXXXXXXXXXXXXX.part" in the directory of the path.
std::wstring TemporaryNameBeside(const std::wstring& path);
/// Whether the name is free, or the file that has it can be replaced, if `replaces`; ERROR_ACCESS_DENIED for
/// a directory and a read-only file.
bool CanReplace(const std::wstring& path, bool replaces);
/// Opens one for its maker alone, with every right that the following steps need; a link itself.
FileHandle OpenNewFile(const std::wstring& path, unsigned long disposition);
/// Gives an open file the owner, as far as the process may, and the access of the file that has the path; one
/// that is missing or a link has none to give.
bool TakeSecurityOf(const std::wstring& path, const FileHandle& file);
/// Moves the open file itself, which needs the right to delete it: what has its old name does not count.
bool GiveName(const FileHandle& file, const std::wstring& path, bool replaces);

}  // namespace quillon::platform
