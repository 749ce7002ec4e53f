#include "modules/Waiting.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "quillon/IShutdownNotifier.h"
#include "quillon/ServiceLocator.h"

namespace quillon::agent {

void WaitSeconds(long long seconds) {
    std::mutex mutex;
    std::condition_variable changed;
    bool shutsDown = false;
    auto* const notifier = ServiceLocator::Get<IShutdownNotifier>(true);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    const auto wakeUp = [&] {
        const std::lock_guard lock(mutex);
        shutsDown = true;
        changed.notify_all();
    };
    const std::uint64_t registration = notifier == nullptr ? 0 : notifier->OnShutdown(wakeUp);
    {
        std::unique_lock lock(mutex);
        changed.wait_until(lock, end, [&shutsDown] { return shutsDown; });
    }
    if (notifier != nullptr) notifier->ForgetCallback(registration);
}

}  // namespace quillon::agent
