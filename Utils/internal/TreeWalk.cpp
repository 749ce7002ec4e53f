#include "Utils/internal/TreeWalk.h"

#include <cstdint>
#include <vector>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "quillon/PathUtils.h"

namespace quillon {

namespace {

using platform::DirectoryEntry;
using platform::FolderWalk;

/// Returns whether a call failed for want of descriptors or memory, which says nothing of what it asked for.
bool IsOutOfMeans() {
    const std::uint32_t code = platform::LastError();
    return code == base::kTooManyOpenFiles || code == base::kNotEnoughMemory ||
           code == base::kNoSystemResources;
}

class Walker {
public:
    Walker(FolderWalk walk, std::string path, FolderWalk::Purpose purpose, ITreeVisitor& visitor)
        : m_walk(std::move(walk)),
          m_start(path),
          m_path(std::move(path)),
          m_purpose(purpose),
          m_visitor(visitor) {}

    bool Run() {
        if (!VisitFiles()) return false;
        for (;;) {
            Level& level = m_levels.back();
            if (level.next < level.folders.size()) {
                if (!VisitFolder(level.folders[level.next])) return false;
            } else {
                if (m_levels.size() == 1) return true;
                if (!Return()) return false;
            }
        }
    }

private:
    /// A directory that the walk is in or below.
    struct Level {
        std::vector<DirectoryEntry> folders;
        std::size_t next = 0;
        std::size_t pathLength = 0;
    };

    bool VisitFiles() {
        Level level{{}, 0, m_path.size()};
        m_files.clear();
        const bool isListed = m_walk.List(
            [&](DirectoryEntry&& entry) {
                (entry.isDirectory ? level.folders : m_files).push_back(std::move(entry));
            },
            m_visitor.Detail());
        const bool isStart = m_levels.empty();
        if (!isListed && (isStart || !PassesOver())) return false;
        for (const DirectoryEntry& file : m_files) {
            if (!m_visitor.OnFileEntry(m_walk, m_path, file)) return false;
        }
        m_levels.push_back(std::move(level));
        return true;
    }

    bool VisitFolder(const DirectoryEntry& folder) {
        if (!folder.isLink) return VisitOwnFolder(folder);
        ++m_levels.back().next;
        return m_visitor.OnFolderLinkEntry(m_walk, m_path, folder);
    }

    bool VisitOwnFolder(const DirectoryEntry& folder) {
        const auto next = m_visitor.BeforeFolder(m_path, folder, m_levels.size() - 1);
        if (next == ITreeVisitor::Next::End) return false;
        if (next == ITreeVisitor::Next::Enter && m_walk.Enter(folder.name)) {
            if (!m_path.ends_with(PathUtils::PathSep)) m_path += PathUtils::PathSep;
            m_path += folder.name;
            return VisitFiles();
        }
        ++m_levels.back().next;
        return next == ITreeVisitor::Next::Skip || PassesOver();
    }

    /// Whether the walk goes on without the directory that was just refused.
    bool PassesOver() const { return m_visitor.SkipsLostFolders() && !IsOutOfMeans(); }

    bool Return() {
        m_levels.pop_back();
        m_path.resize(m_levels.back().pathLength);
        const std::size_t depth = m_levels.size();
        if (!m_walk.Leave() && (!m_visitor.SkipsLostFolders() || !ComeBack())) return false;
        if (m_levels.size() < depth) return true;
        Level& level = m_levels.back();
        return m_visitor.AfterFolder(m_walk, level.folders[level.next++].name);
    }

    /// Goes down to the last level from the start anew, or as far as its directories are still there, where
    /// the lost one is passed over: there is no way up from a directory that is gone.
    bool ComeBack() {
        auto walk = FolderWalk::Open(m_start, m_purpose);
        if (!walk) return false;
        m_walk = std::move(*walk);
        for (std::size_t i = 0; i + 1 < m_levels.size(); ++i) {
            Level& level = m_levels[i];
            if (m_walk.Enter(level.folders[level.next].name)) continue;
            if (!PassesOver()) return false;
            m_levels.resize(i + 1);
            ++m_levels.back().next;
            m_path.resize(m_levels.back().pathLength);
        }
        return true;
    }

    FolderWalk m_walk;
    const std::string m_start;
    std::string m_path;
    FolderWalk::Purpose m_purpose;
    ITreeVisitor& m_visitor;
    std::vector<Level> m_levels;
    std::vector<DirectoryEntry> m_files;  ///< of the last directory; one for all, for its memory
};

}  // namespace

bool WalkTree(const std::string& folder, FolderWalk::Purpose purpose, ITreeVisitor& visitor) {
    auto walk = FolderWalk::Open(folder, purpose);
    return walk && Walker(std::move(*walk), folder, purpose, visitor).Run();
}

}  // namespace quillon
