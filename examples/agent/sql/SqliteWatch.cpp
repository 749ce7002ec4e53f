#include "sql/SqliteWatch.h"

#include <algorithm>
#include <thread>

#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"
#include "quillon/detail/Deadline.h"

namespace quillon::agent {

namespace {

constexpr int kOperationsBetweenLooks = 1000;  // of SQLite's machine: some ten microseconds

bool IsShutdownRequested() {
    auto* const monitor = ServiceLocator::Get<IShutdownMonitor>(true);
    return monitor != nullptr && monitor->IsShutdownRequested();
}

}  // namespace

void SqliteWatch::Attach(sqlite3* handle) {
    sqlite3_busy_handler(handle, &SqliteWatch::OnBusy, this);
    sqlite3_progress_handler(handle, kOperationsBetweenLooks, &SqliteWatch::OnProgress, this);
}

bool SqliteWatch::MustStop() {
    if (!m_isStoppable) return false;
    if (IsShutdownRequested()) m_reason = "the agent ends";
    if (m_end && Clock::now() >= *m_end) m_reason = "its time is over";
    return m_reason != nullptr;
}

int SqliteWatch::OnProgress(void* watch) { return static_cast<SqliteWatch*>(watch)->MustStop() ? 1 : 0; }

/// SQLite calls this with 0 when a wait begins, and again after every wait.
int SqliteWatch::OnBusy(void* watch, int count) {
    constexpr Milliseconds kShortest(1), kLongest(20);
    auto& self = *static_cast<SqliteWatch*>(watch);
    const auto now = Clock::now();
    if (count == 0) self.m_busySince = now;
    if (now - self.m_busySince >= self.m_busyTime || self.MustStop()) return 0;
    std::this_thread::sleep_for(std::clamp(Milliseconds(count), kShortest, kLongest));
    return 1;
}

SqliteStoppable::SqliteStoppable(SqliteWatch& watch, SqliteWatch::Milliseconds limit)
    : m_watch(watch), m_wasStoppable(watch.m_isStoppable), m_outerEnd(watch.m_end) {
    m_watch.m_isStoppable = true;
    m_watch.m_reason = nullptr;
    if (limit.count() <= 0) return;
    const auto end = detail::DeadlineAfter(limit);
    m_watch.m_end = m_outerEnd ? std::min(end, *m_outerEnd) : end;
}

SqliteStoppable::~SqliteStoppable() {
    m_watch.m_isStoppable = m_wasStoppable;
    m_watch.m_end = m_outerEnd;
}

}  // namespace quillon::agent
