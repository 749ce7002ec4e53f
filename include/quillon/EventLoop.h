#pragma once

#include <condition_variable>
#include <mutex>

#include "quillon/Export.h"

namespace quillon {

/// Holds 32 signal bits, at first clear, and lets threads wait until one is set. A bit stays set until
/// it is reset, so a wait returns at once while one is. Thread-safe; when several threads wait, setting
/// bits wakes one of them. Nothing is logged; a failure of the system's mutex throws std::system_error.
/// The object must not end while a thread waits.
///
/// @code
/// constexpr unsigned int kStop = 1, kWork = 2;
/// EventLoop loop;
/// loop.Set(kWork);  // as a rule on another thread
/// if (loop.WaitForSignals(500) && (loop.GetSignalSet() & kStop) == 0) loop.Reset(kWork);
/// @endcode
class QUILLON_API EventLoop {
public:
    /// Starts with no bit set.
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// Sets the bits of `mask` and wakes one waiting thread.
    void Set(unsigned int mask);
    /// Clears the bits of `mask`, or all bits; no thread is woken.
    void Reset(unsigned int mask);
    void ResetAllSignals();
    /// Returns the bits that are set.
    unsigned int GetSignalSet() const;
    /// Waits, without limit, until a bit is set; the bits stay as they are.
    void WaitForSignals();
    /// Waits in the same way for at most that many milliseconds by the system's clock, and returns
    /// whether a bit is set. 0 does not wait.
    bool WaitForSignals(unsigned long milliseconds);

private:
    unsigned int m_signals = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_wakeUp;
};

}  // namespace quillon
