#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "platform/AuditApi.h"

namespace quillon::simulation {

/// Auto-reset events, and callbacks on other threads when one is signalled, in memory: what
/// RegisterWaitForSingleObject and UnregisterWait do. As there, one signal starts one callback, a signal
/// that nobody waits for is kept for the next wait, a wait goes on until it is unregistered, and
/// unregistering does not wait for a callback that runs: it may still run, or start, afterwards.
/// Lives as long as the process. Thread-safe.
class Waits {
public:
    HANDLE MakeEvent();
    void CloseEvent(HANDLE event);
    /// Wakes one waiter, now or when the next one comes.
    void Signal(HANDLE event);
    HANDLE Register(HANDLE event, platform::AuditCalls::WaitCallback callback);
    /// Does not wait for a callback that runs, which ends in its own time.
    void Unregister(HANDLE wait);

    /// Waits until a callback runs.
    void AwaitCallback();
    /// Waits until no callback runs nor is due, and the threads of former waits have ended.
    void AwaitQuiet();
    std::size_t CountEvents();
    std::size_t CountWaits();

private:
    struct Waiter {
        std::uintptr_t event = 0;
        platform::AuditCalls::WaitCallback callback = nullptr;
        bool isDue = false;
        bool isRunning = false;
        bool isStopped = false;
    };

    void Run(const std::shared_ptr<Waiter>& waiter);
    bool IsQuiet() const;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::uintptr_t, bool> m_events;  // signalled
    std::map<std::uintptr_t, std::shared_ptr<Waiter>> m_waiters;
    std::uintptr_t m_lastHandle = 0;
    int m_callbacks = 0;
};

}  // namespace quillon::simulation
