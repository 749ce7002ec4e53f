#include "quillon/EventLoop.h"

#include <algorithm>
#include <chrono>

namespace quillon {

namespace {

using Clock = std::chrono::system_clock;

/// The clock's end when the wait reaches past it; also when the clock stands before 1970.
Clock::time_point DeadlineAfter(unsigned long milliseconds) {
    const auto now = Clock::now();
    const auto room = Clock::time_point::max() - std::max(now, Clock::time_point());
    const auto most = std::chrono::duration_cast<std::chrono::milliseconds>(room).count();
    const auto wanted = std::min<unsigned long long>(milliseconds, static_cast<unsigned long long>(most));
    return now + std::chrono::milliseconds(static_cast<long long>(wanted));
}

}  // namespace

EventLoop::EventLoop() = default;
EventLoop::~EventLoop() = default;

void EventLoop::Set(unsigned int mask) {
    {
        const std::lock_guard lock(m_mutex);
        m_signals |= mask;
    }
    m_wakeUp.notify_one();
}

void EventLoop::Reset(unsigned int mask) {
    const std::lock_guard lock(m_mutex);
    m_signals &= ~mask;
}

void EventLoop::ResetAllSignals() {
    const std::lock_guard lock(m_mutex);
    m_signals = 0;
}

unsigned int EventLoop::GetSignalSet() const {
    const std::lock_guard lock(m_mutex);
    return m_signals;
}

void EventLoop::WaitForSignals() {
    std::unique_lock lock(m_mutex);
    m_wakeUp.wait(lock, [this] { return m_signals != 0; });
}

bool EventLoop::WaitForSignals(unsigned long milliseconds) {
    std::unique_lock lock(m_mutex);
    return m_wakeUp.wait_until(lock, DeadlineAfter(milliseconds), [this] { return m_signals != 0; });
}

}  // namespace quillon
