#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/FileApi.h"

namespace quillon::platform {

/// A position in a tree of directories, which moves one directory at a time, however
/// deep the tree is. It never passes through a link below its start, nor through
/// one that is put in a directory's place while it is there: what it removes lies in
/// the tree it was opened on. A failure is false or nothing, see LastError().
class FolderWalk {
public:
    /// ToErase keeps the directories it is in from being moved away, where the system
    /// can, and does not start at a link. It does not enter another file system that is mounted in the
    /// tree (17, ERROR_NOT_SAME_DEVICE).
    enum class Purpose { ToList, ToErase };

    static std::optional<FolderWalk> Open(const std::string& folder, Purpose purpose);

    enum class Detail { Names, Facts };

    /// Calls `visit` for all that is in the directory, without "." and ".."; Facts tells sizes and times
    /// as well.
    bool List(const std::function<void(DirectoryEntry&&)>& visit, Detail detail = Detail::Names);
    /// Returns what SizeOfFile() does; `name` is as it was listed.
    std::optional<std::uint64_t> SizeOf(const std::string& name) const;
    /// Removes a file as platform::RemoveFile() does.
    bool RemoveFile(const std::string& name);
    /// Removes a directory as platform::RemoveEmptyDirectory() does.
    bool RemoveEmptyDirectory(const std::string& name);
    bool Enter(const std::string& name);
    /// Back to the directory that it entered this one from.
    bool Leave();

private:
    struct State;
    struct Drop {
        void operator()(State* state) const noexcept;
    };
    using OwnState = std::unique_ptr<State, Drop>;

    explicit FolderWalk(OwnState state) : m_state(std::move(state)) {}
    OwnState m_state;
};

}  // namespace quillon::platform
