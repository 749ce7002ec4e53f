#pragma once

#include <atomic>

namespace quillon::agent {

/// Ends one invocation as the agent's shutdown would: on its thread the monitor then tells that the host is
/// shutting down, and those who wait there are called back.
class Cancellation {
public:
    Cancellation() = default;
    Cancellation(const Cancellation&) = delete;
    Cancellation& operator=(const Cancellation&) = delete;

    /// May be called on any thread, and more than once.
    void Cancel();
    bool IsCancelled() const { return m_isCancelled; }

private:
    std::atomic<bool> m_isCancelled = false;
};

/// Says that what the calling thread does during the scope belongs to an invocation. Scopes do not nest.
class InvocationScope {
public:
    explicit InvocationScope(const Cancellation& cancellation) { t_current = &cancellation; }
    ~InvocationScope() { t_current = nullptr; }
    InvocationScope(const InvocationScope&) = delete;
    InvocationScope& operator=(const InvocationScope&) = delete;

    /// Returns the calling thread's; null outside a scope.
    static const Cancellation* Current() { return t_current; }

private:
    static thread_local const Cancellation* t_current;
};

}  // namespace quillon::agent
