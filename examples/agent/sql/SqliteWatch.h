#pragma once

#include <sqlite3.h>

#include <chrono>
#include <optional>

namespace quillon::agent {

/// Watches the statements of one connection: how long they wait for another connection's lock, and
/// whether a statement that may be stopped has to end. The connection keeps its address.
class SqliteWatch {
public:
    using Milliseconds = std::chrono::milliseconds;

    explicit SqliteWatch(Milliseconds busyTime) : m_busyTime(busyTime) {}
    SqliteWatch(const SqliteWatch&) = delete;
    SqliteWatch& operator=(const SqliteWatch&) = delete;

    void Attach(sqlite3* handle);
    /// Returns why the last statement that could be stopped was; null when it was not.
    const char* Reason() const { return m_reason; }

private:
    friend class SqliteStoppable;
    using Clock = std::chrono::steady_clock;

    static int OnProgress(void* watch);
    static int OnBusy(void* watch, int count);
    bool MustStop();

    const Milliseconds m_busyTime;
    Clock::time_point m_busySince;
    bool m_isStoppable = false;
    std::optional<Clock::time_point> m_end;
    const char* m_reason = nullptr;
};

/// Lets the statements of a connection be stopped while it lives: when the host shuts down, or after a
/// time. Stoppable parts may be nested.
class SqliteStoppable {
public:
    /// No time, or 0, is no limit.
    explicit SqliteStoppable(SqliteWatch& watch, SqliteWatch::Milliseconds limit = {});
    ~SqliteStoppable();
    SqliteStoppable(const SqliteStoppable&) = delete;
    SqliteStoppable& operator=(const SqliteStoppable&) = delete;

private:
    SqliteWatch& m_watch;
    const bool m_wasStoppable;
    const std::optional<SqliteWatch::Clock::time_point> m_outerEnd;
};

}  // namespace quillon::agent
