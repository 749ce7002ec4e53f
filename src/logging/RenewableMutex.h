#pragma once

#include <memory>
#include <mutex>

namespace quillon {

/// A recursive mutex that can be made anew when a thread took it that does not exist any more: in the child
/// of a fork, and at the end of a process on Windows, which kills the other threads first.
class RenewableMutex {
public:
    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }
    /// Only the calling thread exists.
    void Renew() { std::construct_at(&m_mutex); }

private:
    std::recursive_mutex m_mutex;
};

}  // namespace quillon
