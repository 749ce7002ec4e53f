#include "Utils/internal/TreeWalk.h"

#include <vector>

#include "quillon/PathUtils.h"

namespace quillon {

namespace {

using platform::DirectoryEntry;
using platform::FolderWalk;

class Walker {
public:
    Walker(FolderWalk walk, std::string path, ITreeVisitor& visitor)
        : m_walk(std::move(walk)), m_path(std::move(path)), m_visitor(visitor) {}

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
        std::vector<std::string> files;
        const bool isListed = m_walk.List([&](DirectoryEntry&& entry) {
            if (entry.isDirectory) {
                level.folders.push_back(std::move(entry));
            } else {
                files.push_back(std::move(entry.name));
            }
        });
        if (!isListed) return false;
        for (const std::string& file : files) {
            if (!m_visitor.OnFile(m_walk, m_path, file)) return false;
        }
        m_levels.push_back(std::move(level));
        return true;
    }

    bool VisitFolder(const DirectoryEntry& folder) {
        if (!folder.isLink) {
            if (!m_walk.Enter(folder.name)) return false;
            if (!m_path.ends_with(PathUtils::PathSep)) m_path += PathUtils::PathSep;
            m_path += folder.name;
            return VisitFiles();
        }
        ++m_levels.back().next;
        return m_visitor.OnFolderLink(m_walk, folder.name);
    }

    bool Return() {
        m_levels.pop_back();
        Level& level = m_levels.back();
        m_path.resize(level.pathLength);
        return m_walk.Leave() && m_visitor.AfterFolder(m_walk, level.folders[level.next++].name);
    }

    FolderWalk m_walk;
    std::string m_path;
    ITreeVisitor& m_visitor;
    std::vector<Level> m_levels;
};

}  // namespace

bool WalkTree(const std::string& folder, FolderWalk::Purpose purpose, ITreeVisitor& visitor) {
    auto walk = FolderWalk::Open(folder, purpose);
    return walk && Walker(std::move(*walk), folder, visitor).Run();
}

}  // namespace quillon
