#pragma once

#include <optional>
#include <string>

namespace quillon::platform {

/// Library paths for wide functions, with the escapes of PathFromWide() turned back. Nothing, and
/// ERROR_INVALID_NAME, for one that holds a NUL: the system would act on the part before it.

/// A path as the system reads it; its extended form where a listed name in it ends in a dot or a blank.
std::optional<std::wstring> WidePath(const std::string& path);
/// A name, or a part of one, that stands behind an extended path.
std::optional<std::wstring> WideName(const std::string& name);
/// Returns a path that does not depend on the working directory; nothing when the system refuses it.
std::optional<std::wstring> FullPath(const std::wstring& path);
/// Returns the full form, which has no limit of 260 characters, as "\\?\C:\a"; nothing also for a path that
/// names a device (ERROR_ACCESS_DENIED).
std::optional<std::wstring> ExtendedPath(const std::string& path);

}  // namespace quillon::platform
