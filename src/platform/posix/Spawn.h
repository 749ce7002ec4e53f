#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace quillon::platform {

/// What a child does between its start and its program, in this order of members.
struct SpawnPlan {
    bool isGroupLeader = false;
    /// SIGKILL when the thread that spawns ends.
    bool endsWithThread = false;
    /// For the standard handles; -1 is the null device. None of them is a standard descriptor of this
    /// process.
    int input = -1, output = -1;
    int group = -1;                     ///< directory of the control group to start in; -1: this process's
    std::string directory;              ///< native; empty: the caller's
    std::vector<std::string> programs;  ///< native paths, of which the first that is there is run
    std::vector<std::string> arguments, environment;
};

/// Starts a child with default signal handling, an empty signal mask, and no descriptor but the standard
/// ones. 0, with errno, when the program cannot be run. `descriptor` becomes a handle for the process, or -1
/// on a kernel without them; it is the child's even where the host reaps children by itself.
pid_t Spawn(const SpawnPlan& plan, int& descriptor);

}  // namespace quillon::platform
