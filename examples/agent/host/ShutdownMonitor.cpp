#include "host/ShutdownMonitor.h"

#include "system/Console.h"

namespace quillon::agent {

ShutdownMonitor::ShutdownMonitor() { OnInterrupt(&ShutdownMonitor::HandleInterrupt); }

void ShutdownMonitor::RequestShutdown() { Requested() = true; }

bool ShutdownMonitor::IsShutdownRequested() { return Requested(); }

/// Initialised by the compiler, so that a signal handler meets no guard here.
std::atomic<bool>& ShutdownMonitor::Requested() {
    static constinit std::atomic<bool> requested = false;
    static_assert(std::atomic<bool>::is_always_lock_free);
    return requested;
}

bool ShutdownMonitor::HandleInterrupt() {
    const bool isFirst = !Requested().exchange(true);
    return isFirst;
}

}  // namespace quillon::agent
