#pragma once

#include <condition_variable>
#include <mutex>

#include "quillon/Export.h"

namespace quillon {

/// A set of 32 signal bits and a wait for any of them. A bit stays set until it is
/// reset, so a wait returns at once while one is. Any number of setters and
/// waiters; setting wakes one waiter. Failures of the system's mutex are thrown as
/// std::system_error.
class QUILLON_API EventLoop {
public:
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    void Set(unsigned int mask);
    void Reset(unsigned int mask);
    void ResetAllSignals();
    unsigned int GetSignalSet() const;
    void WaitForSignals();
    /// False when none is set after that many milliseconds; 0 only looks.
    bool WaitForSignals(unsigned long milliseconds);

private:
    unsigned int m_signals = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_wakeUp;
};

}  // namespace quillon
