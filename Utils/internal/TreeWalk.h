#pragma once

#include <cstddef>
#include <string>

#include "platform/FolderWalk.h"

namespace quillon {

/// Acts on the entries of a tree of directories. Each operation ends the walk by returning false.
class ITreeVisitor {
public:
    virtual ~ITreeVisitor() = default;
    /// Whether entries come with their sizes and times.
    virtual platform::FolderWalk::Detail Detail() const { return platform::FolderWalk::Detail::Names; }
    /// `folder` is the path that holds the file, as the walk's was given.
    virtual bool OnFile(platform::FolderWalk& walk, const std::string& folder, const std::string& name) = 0;
    /// The same with all that is known of the file.
    virtual bool OnFileEntry(platform::FolderWalk& walk, const std::string& folder,
                             const platform::DirectoryEntry& entry) {
        return OnFile(walk, folder, entry.name);
    }
    enum class Next { Enter, Skip, End };
    /// Called before a directory that is no link is entered; `depth` is 0 for those in the start.
    virtual Next BeforeFolder(const std::string& /*folder*/, const platform::DirectoryEntry&,
                              std::size_t /*depth*/) {
        return Next::Enter;
    }
    /// Whether the walk goes on without a directory below its start that cannot be listed, or is gone.
    /// A lack of descriptors or memory ends each walk.
    virtual bool SkipsLostFolders() const { return false; }
    /// Links to directories are not entered.
    virtual bool OnFolderLink(platform::FolderWalk& walk, const std::string& name) = 0;
    /// The same with all that is known of the link.
    virtual bool OnFolderLinkEntry(platform::FolderWalk& walk, const std::string& /*folder*/,
                                   const platform::DirectoryEntry& entry) {
        return OnFolderLink(walk, entry.name);
    }
    /// Called when everything in the directory was visited and the walk is back in the one above.
    virtual bool AfterFolder(platform::FolderWalk& walk, const std::string& name) = 0;
};

/// Visits all that is below `folder`: first its files in the system's order, then
/// one subdirectory after the other. False when a directory cannot be listed, or as
/// soon as the visitor says so. No recursion, whatever the depth.
bool WalkTree(const std::string& folder, platform::FolderWalk::Purpose purpose, ITreeVisitor& visitor);

}  // namespace quillon
