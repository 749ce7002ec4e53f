#pragma once

#include <sys/types.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace quillon::platform {

/// Holds the children that have not been reaped. An identifier in the table cannot belong to another
/// process: a child is reaped and leaves the table under one hold of the lock.
struct ChildTable {
    struct Child {
        /// "NAME=value" in the environment of its tree; empty: it is not killed as one.
        std::string treeMark;
        bool letGo = false;                      ///< nobody waits for it
        std::optional<std::int32_t> killedWith;  ///< the status that KillProcess gave it
    };

    std::mutex mutex;
    std::unordered_map<pid_t, Child> children;
};

/// Never destroyed: a detached thread may outlive the static objects.
ChildTable& Children();
/// Returns whether a child has ended, reaped or not.
bool HasChildEnded(pid_t child);
/// Kills a child that leads its group, and its descendants: the members of the
/// group, the children of all these, and whoever has the mark in its environment.
/// The caller keeps the child from being reaped.
bool KillTree(pid_t leader, const std::string& mark);
/// Returns whether a process exists and has not ended.
bool IsAlive(pid_t process);
/// A handle that can be polled for the end of a process; -1 when there is none.
int OpenProcessDescriptor(pid_t process);

}  // namespace quillon::platform
