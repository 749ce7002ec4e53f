#pragma once

#include <dirent.h>

#include "platform/FileApi.h"

namespace quillon::platform {

/// What was found in an open folder.
DirectoryEntry ToEntry(int folder, const ::dirent& found);

}  // namespace quillon::platform
