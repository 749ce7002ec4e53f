#include "modules/Waiting.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"

namespace quillon::agent {

void WaitSeconds(long long seconds) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kLook(100);
    auto* const monitor = ServiceLocator::Get<IShutdownMonitor>(true);
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    while (Clock::now() < end && (monitor == nullptr || !monitor->IsShutdownRequested()))
        std::this_thread::sleep_for(std::min<Clock::duration>(kLook, end - Clock::now()));
}

}  // namespace quillon::agent
