#pragma once

#include <atomic>

#include "quillon/IShutdownMonitor.h"

namespace quillon::agent {

/// The host's shutdown signal: set by RequestShutdown and by the first Ctrl-C, for
/// the rest of the process's life. The second Ctrl-C ends the process at once.
class ShutdownMonitor final : public IShutdownMonitor {
public:
    ShutdownMonitor();

    void RequestShutdown() override;
    bool IsShutdownRequested() override;

private:
    static std::atomic<bool>& Requested();
    static bool HandleInterrupt();
};

}  // namespace quillon::agent
