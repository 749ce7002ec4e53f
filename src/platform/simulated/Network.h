#pragma once

#include <atomic>

namespace quillon::platform::simulated {

/// What the network lacks, for those who test. Any thread.
struct Network {
    std::atomic<bool> hasNoSockets{false};
    std::atomic<bool> hasNoHostName{false};
    std::atomic<bool> hasNoQualifiedName{false};
    std::atomic<bool> hasNoLoopbackName{false};
    std::atomic<int> socketStarts{0};
};

/// The process's.
Network& TheNetwork();

}  // namespace quillon::platform::simulated
