#pragma once

#include <optional>

#include "platform/FileApi.h"
#include "platform/Handle.h"

namespace quillon::platform {

/// What is done to a file, a directory or a link through its handle, whatever has its name by then. A failure
/// is false or nothing, see LastError().

std::optional<FileIdentity> IdentityOf(const FileHandle& file);
/// Removes it; the handle needs the right to delete.
bool RemoveOpen(const FileHandle& file);
/// Whether it is read-only; the handle needs the right to read or to write attributes.
std::optional<bool> IsReadOnly(const FileHandle& file);
bool SetReadOnly(const FileHandle& file, bool isReadOnly);

}  // namespace quillon::platform
