#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "quillon/IShutdownMonitor.h"
#include "quillon/IShutdownNotifier.h"
#include "quillon/ServiceLocator.h"

namespace quillon::testkit {

/// Is the host's shutdown signal, which a test gives. It is registered with ServiceLocator, as a monitor
/// and as a notifier, for its life. Thread-safe, but for its beginning and end.
///
/// @code
/// testkit::ShutdownMonitor shutdown;
/// shutdown.RequestShutdown();  // a method that waits for a command now returns
/// @endcode
class ShutdownMonitor final : public IShutdownMonitor, public IShutdownNotifier {
public:
    ShutdownMonitor() {
        ServiceLocator::Put<IShutdownMonitor>(this);
        ServiceLocator::Put<IShutdownNotifier>(this);
    }
    ~ShutdownMonitor() override {
        if (ServiceLocator::Get<IShutdownMonitor>(true) == this) ServiceLocator::Remove<IShutdownMonitor>();
        if (ServiceLocator::Get<IShutdownNotifier>(true) == this) ServiceLocator::Remove<IShutdownNotifier>();
    }
    ShutdownMonitor(const ShutdownMonitor&) = delete;
    ShutdownMonitor& operator=(const ShutdownMonitor&) = delete;

    /// Begins the shutdown: the callbacks run, on this thread, before it returns.
    void RequestShutdown() override {
        m_isRequested = true;
        const std::lock_guard lock(m_mutex);
        for (const auto& [registration, callback] : std::exchange(m_callbacks, {})) callback();
    }
    /// Begins the shutdown when the library has asked for it `looks` times more, which happens in the
    /// middle of what is tested.
    void RequestShutdownAfter(int looks) { m_looksLeft = looks; }
    /// Takes the shutdown back, for the next part of a test.
    void Reset() {
        m_looksLeft = -1;
        m_isRequested = false;
    }

    bool IsShutdownRequested() override {
        ++m_looks;
        if (!m_isRequested && m_looksLeft >= 0 && m_looksLeft-- == 0) RequestShutdown();
        return m_isRequested;
    }
    /// Returns how often the library has asked.
    int CountLooks() const { return m_looks; }

    std::uint64_t OnShutdown(std::function<void()> callback) override {
        const std::lock_guard lock(m_mutex);
        if (m_isRequested) {
            callback();
            return 0;
        }
        m_callbacks.emplace(++m_last, std::move(callback));
        return m_last;
    }
    void ForgetCallback(std::uint64_t registration) override {
        const std::lock_guard lock(m_mutex);
        m_callbacks.erase(registration);
    }

private:
    std::atomic<bool> m_isRequested = false;
    std::atomic<int> m_looks = 0, m_looksLeft = -1;
    std::mutex m_mutex;
    std::uint64_t m_last = 0;
    std::map<std::uint64_t, std::function<void()>> m_callbacks;
};

}  // namespace quillon::testkit
