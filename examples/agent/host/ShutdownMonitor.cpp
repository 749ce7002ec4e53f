#include "host/ShutdownMonitor.h"

#include <map>
#include <mutex>
#include <utility>

#include "system/Console.h"

namespace quillon::agent {

namespace {

/// Who is to be told. The thread that tells of an interrupt may outlive every monitor.
class Callbacks {
public:
    static Callbacks& Instance() {
        static Callbacks& callbacks = *new Callbacks;
        return callbacks;
    }

    std::uint64_t Add(std::function<void()> callback) {
        const std::lock_guard lock(m_mutex);
        m_callbacks.emplace(++m_last, std::move(callback));
        return m_last;
    }

    /// Waits for a callback that is running.
    void Remove(std::uint64_t registration) {
        const std::lock_guard lock(m_mutex);
        m_callbacks.erase(registration);
    }

    /// Calls each once.
    void Call() {
        const std::lock_guard lock(m_mutex);
        for (const auto& [registration, callback] : std::exchange(m_callbacks, {})) callback();
    }

private:
    std::mutex m_mutex;
    std::uint64_t m_last = 0;
    std::map<std::uint64_t, std::function<void()>> m_callbacks;
};

void WatchInterrupts(InterruptHandler handler) {
    static std::once_flag isWatching;
    std::call_once(isWatching, [handler] {
        AfterInterrupt([] { Callbacks::Instance().Call(); });
        OnInterrupt(handler);
    });
}

}  // namespace

ShutdownMonitor::ShutdownMonitor() { WatchInterrupts(&ShutdownMonitor::HandleInterrupt); }

void ShutdownMonitor::RequestShutdown() {
    Requested() = true;
    Callbacks::Instance().Call();
}

bool ShutdownMonitor::IsShutdownRequested() { return Requested(); }

std::uint64_t ShutdownMonitor::OnShutdown(std::function<void()> callback) {
    const std::uint64_t registration = Callbacks::Instance().Add(std::move(callback));
    // An interrupt before Add() has called nobody.
    if (Requested()) Callbacks::Instance().Call();
    return registration;
}

void ShutdownMonitor::ForgetCallback(std::uint64_t registration) {
    Callbacks::Instance().Remove(registration);
}

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
