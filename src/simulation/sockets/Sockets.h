#pragma once

#include <atomic>

namespace quillon::simulation {

/// The start-up of the system's sockets (WSAStartup), which Linux has no counterpart of. Thread-safe.
class Sockets {
public:
    /// Returns the process's, which lives as long as the process.
    static Sockets& Process();

    /// Counts the call; returns false while starts are made to fail.
    bool Start();
    /// Takes one start back.
    void Stop();
    /// Returns whether there are more starts than stops.
    bool IsStarted() const { return m_running > 0; }

    // --- For those who test ---

    /// Makes every start fail until it is called with false.
    void FailStarts(bool doFail) { m_isFailing = doFail; }
    int CountStarts() const { return m_starts; }

private:
    std::atomic<bool> m_isFailing{false};
    std::atomic<int> m_starts{0};
    std::atomic<int> m_running{0};
};

}  // namespace quillon::simulation
