#pragma once

#include <chrono>
#include <cstdint>

namespace quillon::agent {

/// How far long work is, on a line of standard error that goes with the object. Nothing
/// is written in the first second, nor when standard error is no terminal.
class Progress {
public:
    explicit Progress(std::int64_t totalBytes);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Advance(std::int64_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    const bool m_isShown;
    const std::int64_t m_total;
    std::int64_t m_done = 0;
    Clock::time_point m_next;
    bool m_isWritten = false;
};

}  // namespace quillon::agent
