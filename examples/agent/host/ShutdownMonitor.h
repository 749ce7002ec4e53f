#pragma once

#include <atomic>

#include "quillon/IShutdownMonitor.h"
#include "quillon/IShutdownNotifier.h"

namespace quillon::agent {

/// The host's shutdown signal: set by RequestShutdown and by the first Ctrl-C or
/// other request to end, for the rest of the process's life. The second one ends the
/// process at once. On the thread of an invocation that is cancelled it is set as well.
class ShutdownMonitor final : public IShutdownMonitor, public IShutdownNotifier {
public:
    ShutdownMonitor();

    void RequestShutdown() override;
    bool IsShutdownRequested() override;
    std::uint64_t OnShutdown(std::function<void()> callback) override;
    void ForgetCallback(std::uint64_t registration) override;

private:
    static std::atomic<bool>& Requested();
    static bool HandleInterrupt();
};

}  // namespace quillon::agent
