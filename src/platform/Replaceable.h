#pragma once

#include <atomic>
#include <list>
#include <mutex>
#include <utility>

namespace quillon::platform {

/// Holds the calls of a facility, which a test replaces while others may use them. Calls that were replaced
/// are kept for the process's life, because somebody may still be in one. Thread-safe.
template <class Calls>
class Replaceable {
public:
    explicit Replaceable(Calls calls) { Replace(std::move(calls)); }
    Replaceable(const Replaceable&) = delete;
    Replaceable& operator=(const Replaceable&) = delete;

    const Calls& Get() const { return *m_current.load(std::memory_order_acquire); }
    void Replace(Calls calls) {
        const std::lock_guard lock(m_mutex);
        m_current.store(&m_kept.emplace_back(std::move(calls)), std::memory_order_release);
    }

private:
    std::mutex m_mutex;
    std::list<Calls> m_kept;
    std::atomic<const Calls*> m_current = nullptr;
};

}  // namespace quillon::platform
