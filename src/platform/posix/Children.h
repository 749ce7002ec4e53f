#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/ProcessApi.h"
#include "platform/posix/CommandGroup.h"

namespace quillon::platform {

/// A child that has not been reaped. The last owner reaps it, so its identifier belongs to no other process
/// while somebody has a reference.
struct ChildProcess::State {
    State(std::string mark, std::unique_ptr<CommandGroup> commandGroup);
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State();

    pid_t id = 0;  ///< 0 until it is started
    /// Empty on a kernel that has no handles for processes.
    Handle<ObjectTraits> descriptor;
    /// In the environment of its tree; empty: it is not killed as one.
    const std::string treeMark;
    /// What its tree cannot leave; null where there is none.
    const std::unique_ptr<CommandGroup> group;
    /// Kibibytes that this process had used at most at the start. The kernel counts them as the child's.
    const long parentPeak;

    std::mutex mutex;                        ///< held by a kill from its beginning to its end
    std::optional<std::int32_t> killedWith;  ///< the status that the kill gave it
    std::shared_ptr<State> nextLetGo;        ///< the table's lock guards it
};

/// Finds the children by their identifiers, and holds those that nobody waits for.
struct ChildTable {
    std::mutex mutex;  ///< never held during a kill
    std::unordered_map<pid_t, std::weak_ptr<ChildProcess::State>> children;
    /// The first of a chain, which takes no memory: children are let go by a destructor.
    std::shared_ptr<ChildProcess::State> letGo;
};

/// Never destroyed: a detached thread may outlive the static objects.
ChildTable& Children();
/// Returns whether a child has ended, reaped or not.
bool HasEnded(const ChildProcess::State& child);
/// Ends a child in a way that descendants cannot avoid, see ChildProcess::Kill(). False when it cannot be
/// ended; the caller keeps the child from being reaped.
bool KillTree(const ChildProcess::State& leader, std::vector<std::uint32_t>& survivors);
/// Sends a signal to a child, or to all its descendants that can be found at one look.
void SignalChild(const ChildProcess::State& child, int number);
void SignalTree(const ChildProcess::State& leader, int number);
/// Returns whether a process exists and has not ended.
bool IsAlive(pid_t process);
/// A handle that can be polled for the end of a process; -1 when there is none.
int OpenProcessDescriptor(pid_t process);
/// Sends a signal through a handle, or to the identifier when the handle is -1.
bool SendSignal(int descriptor, pid_t process, int number);

}  // namespace quillon::platform
