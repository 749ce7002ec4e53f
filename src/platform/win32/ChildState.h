#pragma once

#include <mutex>

#include "platform/ProcessApi.h"

namespace quillon::platform {

/// A child. The open process keeps its identifier from being used again.
struct ChildProcess::State {
    Handle<ObjectTraits> process;
    /// Empty when the process is neither killed as a tree nor to end with this one.
    Handle<ObjectTraits> job;
    bool isTree = false;      ///< the job holds the descendants too
    bool canBeAsked = false;  ///< it leads a group of console processes
    std::mutex mutex;         ///< held by a kill from its beginning to its end
};

}  // namespace quillon::platform
