#pragma once

#include <sys/resource.h>

#include <cstdint>
#include <optional>

#include "platform/posix/Children.h"

namespace quillon::platform {

/// How a child has ended.
struct ChildEnd {
    int status = 0;  ///< the exit code, when no signal ended it
    int signal = 0;
    rusage usage{};
};

/// Reads the end of a child without reaping it; nothing, see errno, while it runs. Where the host has reaped
/// it, or ignores SIGCHLD, newer kernels (6.15) still tell the status, without what was used; others fail
/// with ECHILD.
std::optional<ChildEnd> ReadChildEnd(const ChildProcess::State& child);
/// Returns 0 or an errno; `reap` takes the child out of the system's list.
int AwaitChild(const ChildProcess::State& child, bool reap, bool block, ChildEnd& end);

}  // namespace quillon::platform
