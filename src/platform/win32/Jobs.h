#pragma once

#include <cstdint>
#include <map>
#include <mutex>

#include "platform/ProcessApi.h"

namespace quillon::platform {

/// The job objects of the children that were started to be killed as trees. A job
/// stays until its first process has ended, also when nobody waits for that: the
/// open process keeps its identifier from being used again.
struct JobTable {
    struct Job {
        Handle<ObjectTraits> job;
        Handle<ObjectTraits> process;  ///< empty while somebody waits for it
    };

    std::mutex mutex;
    std::map<std::uint32_t, Job> jobs;
};

/// Never destroyed: a detached thread may outlive the static objects.
JobTable& Jobs();

}  // namespace quillon::platform
