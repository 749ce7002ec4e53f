#pragma once

#include <dirent.h>

#include <memory>

#include "platform/FileApi.h"

namespace quillon::platform {

struct CloseFolder {
    void operator()(::DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<::DIR, CloseFolder>;

/// Returns the entry that was found in an open directory.
DirectoryEntry ToEntry(int folder, const ::dirent& found);
/// Adds size and times; nothing of an entry that is gone.
void AddFacts(int folder, const char* name, DirectoryEntry& entry);

}  // namespace quillon::platform
