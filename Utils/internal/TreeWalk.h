#pragma once

#include <string>

#include "platform/FolderWalk.h"

namespace quillon {

/// Acts on the entries of a tree of directories. Each operation ends the walk by returning false.
class ITreeVisitor {
public:
    virtual ~ITreeVisitor() = default;
    /// `folder` is the path that holds the file, as the walk's was given.
    virtual bool OnFile(platform::FolderWalk& walk, const std::string& folder, const std::string& name) = 0;
    /// Links to directories are not entered.
    virtual bool OnFolderLink(platform::FolderWalk& walk, const std::string& name) = 0;
    /// Called when everything in the directory was visited and the walk is back in the one above.
    virtual bool AfterFolder(platform::FolderWalk& walk, const std::string& name) = 0;
};

/// Visits all that is below `folder`: first its files in the system's order, then
/// one subdirectory after the other. False when a directory cannot be listed, or as
/// soon as the visitor says so. No recursion, whatever the depth.
bool WalkTree(const std::string& folder, platform::FolderWalk::Purpose purpose, ITreeVisitor& visitor);

}  // namespace quillon
