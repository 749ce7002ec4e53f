#pragma once

#include <string>

#include "platform/FolderWalk.h"

namespace quillon {

/// What is done in a tree of folders. Each operation's false ends the walk.
class ITreeVisitor {
public:
    virtual ~ITreeVisitor() = default;
    /// `folder` is the path that holds the file, as the walk's was given.
    virtual bool OnFile(platform::FolderWalk& walk, const std::string& folder, const std::string& name) = 0;
    /// Links to folders are not entered.
    virtual bool OnFolderLink(platform::FolderWalk& walk, const std::string& name) = 0;
    /// All that is in the folder was visited, the walk is back in the one above.
    virtual bool AfterFolder(platform::FolderWalk& walk, const std::string& name) = 0;
};

/// Visits all that is below `folder`: first its files in the system's order, then
/// one subfolder after the other. False when a folder cannot be listed, or as
/// soon as the visitor says so. No recursion, whatever the depth.
bool WalkTree(const std::string& folder, platform::FolderWalk::Purpose purpose, ITreeVisitor& visitor);

}  // namespace quillon
