#pragma once

#include <string>

#include "platform/Handle.h"

namespace quillon::platform {

/// Returns where an open file or directory is, with all links resolved: "\\?\C:\a" with VOLUME_NAME_DOS, the
/// kernel's name with VOLUME_NAME_NT. Empty when its volume has no name of that kind.
std::wstring FinalPath(const FileHandle& file, unsigned long volumeName);

}  // namespace quillon::platform
