#include "Utils/internal/TreeWalk.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"

namespace quillon {

namespace {

using platform::DirectoryEntry;
using platform::FolderWalk;
using End = FileSystemUtils::WalkEnd;
using Entry = FileSystemUtils::WalkEntry;

/// Shows the entries of a tree to another's visitor, within its limits.
class EntryVisitor final : public ITreeVisitor {
public:
    EntryVisitor(const FileSystemUtils::WalkOptions& options, const std::function<bool(const Entry&)>& visit)
        : m_options(options), m_visit(visit) {}

    FolderWalk::Detail Detail() const override { return FolderWalk::Detail::Facts; }
    bool SkipsLostFolders() const override { return true; }
    bool OnFile(FolderWalk&, const std::string&, const std::string&) override { return true; }
    bool OnFileEntry(FolderWalk&, const std::string& folder, const DirectoryEntry& entry) override {
        return Show(folder, entry);
    }
    bool OnFolderLink(FolderWalk&, const std::string&) override { return true; }
    bool OnFolderLinkEntry(FolderWalk&, const std::string& folder, const DirectoryEntry& entry) override {
        return !m_options.withDirectories || Show(folder, entry);
    }
    Next BeforeFolder(const std::string& folder, const DirectoryEntry& entry, std::size_t depth) override {
        const bool goesOn = m_options.withDirectories ? Show(folder, entry) : !IsCancelled();
        if (!goesOn) return Next::End;
        return depth < m_options.deepest ? Next::Enter : Next::Skip;
    }
    bool AfterFolder(FolderWalk&, const std::string&) override { return true; }

    /// Why the walk was ended by this visitor; Failed when it was not.
    End Reason() const { return m_end; }

private:
    bool Finish(End end) {
        m_end = end;
        return false;
    }

    bool IsCancelled() { return m_options.isCancelled && m_options.isCancelled() && !Finish(End::Cancelled); }

    bool Show(const std::string& folder, const DirectoryEntry& found) {
        if (IsCancelled()) return false;
        if (m_shown == m_options.mostEntries) return Finish(End::TooMany);
        ++m_shown;
        m_entry.path.assign(folder);
        if (!folder.ends_with(PathUtils::PathSep)) m_entry.path += PathUtils::PathSep;
        m_entry.path += found.name;
        m_entry.isDirectory = found.isDirectory;
        m_entry.isLink = found.isLink;
        m_entry.size = found.size;
        m_entry.modified = found.modified;
        m_entry.accessed = found.accessed;
        m_entry.created = found.created;
        return m_visit(m_entry) || Finish(End::Stopped);
    }

    const FileSystemUtils::WalkOptions& m_options;
    const std::function<bool(const Entry&)>& m_visit;
    Entry m_entry;  // one for all, for its memory
    std::uint64_t m_shown = 0;
    End m_end = End::Failed;
};

}  // namespace

FileSystemUtils::WalkEnd FileSystemUtils::WalkFiles(const std::string& directory, const WalkOptions& options,
                                                    const std::function<bool(const WalkEntry&)>& visit) {
    EntryVisitor visitor(options, visit);
    const bool isComplete = WalkTree(directory, FolderWalk::Purpose::ToList, visitor);
    return isComplete ? WalkEnd::Complete : visitor.Reason();
}

}  // namespace quillon
