#pragma once

#include <cstdint>
#include <map>
#include <mutex>

#include "platform/ProcessApi.h"

namespace quillon::platform {

/// The job objects of the children that were started to be killed as trees, as long
/// as somebody waits for them; the open process keeps its identifier from being
/// used again.
struct JobTable {
    std::mutex mutex;
    std::map<std::uint32_t, Handle<ObjectTraits>> jobs;
};

/// Never destroyed: a detached thread may outlive the static objects.
JobTable& Jobs();

}  // namespace quillon::platform
