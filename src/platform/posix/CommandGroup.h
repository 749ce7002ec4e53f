#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/Handle.h"

namespace quillon::platform {

/// A control group of the kernel (version 2) for one command and all that it starts: what is in it cannot
/// leave it by a new session, a new environment or the end of its parents. It is a child of this process's
/// own group, and goes with the object or, when somebody of the command lives on, later.
class CommandGroup {
public:
    /// Makes a group; null where the system has none that this process may divide: version 1 alone, no right
    /// to do so, or a group that the service manager has not delegated.
    static std::unique_ptr<CommandGroup> Make();

    CommandGroup(const CommandGroup&) = delete;
    CommandGroup& operator=(const CommandGroup&) = delete;
    ~CommandGroup();

    /// The directory of the group, in which a process can be started.
    [[nodiscard]] int Descriptor() const { return m_folder.Get(); }
    /// Ends all that is in the group, at once, and waits for it; appends those that are left after the time
    /// that the kernel gets for it.
    void Kill(std::vector<std::uint32_t>& survivors) const;

    /// Whether Make() makes any; for a comparison of the ways to end a tree.
    static void Allow(bool allowed);

private:
    CommandGroup(std::string path, FileHandle folder);

    std::string m_path;
    FileHandle m_folder;
};

}  // namespace quillon::platform
