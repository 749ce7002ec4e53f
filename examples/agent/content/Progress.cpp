#include "content/Progress.h"

#include <algorithm>
#include <cstdio>

#include "system/Console.h"

namespace quillon::agent {

namespace {

constexpr std::chrono::milliseconds kFirst{1000}, kInterval{200};

}  // namespace

Progress::Progress(std::int64_t totalBytes)
    : m_isShown(IsErrorTerminal()),
      m_total(std::max<std::int64_t>(totalBytes, 1)),
      m_next(Clock::now() + kFirst) {}

Progress::~Progress() {
    if (m_isWritten) std::fputs("\r                                        \r", stderr);
}

void Progress::Advance(std::int64_t bytes) {
    m_done += bytes;
    const auto now = Clock::now();
    if (!m_isShown || now < m_next) return;
    m_next = now + kInterval;
    m_isWritten = true;
    const double share = static_cast<double>(m_done) / static_cast<double>(m_total);
    std::fprintf(stderr, "\r%5.1f %% of %.1f MiB ", 100 * share,
                 static_cast<double>(m_total) / (1024 * 1024));
    std::fflush(stderr);
}

}  // namespace quillon::agent
