#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

namespace quillon::agent {

/// Held by the one who opens, closes or moves the file of a database, in any process: only so can a
/// damaged file be looked at again and moved while nobody opens it, and nobody deletes the log of the
/// new file that he takes for the old one's. It is the lock of SQLite on an empty file "FILE.lock".
class SqliteFileLock {
public:
    static constexpr int kWaitMilliseconds = 10'000;

    /// Waits for the lock for so long at most.
    explicit SqliteFileLock(const std::string& libraryPath, int waitMilliseconds = kWaitMilliseconds);

    bool IsHeld() const { return m_code == SQLITE_OK; }
    /// Returns whether somebody else has it; otherwise there can be no lock here, as in a directory
    /// that cannot be written.
    bool IsBusy() const { return (m_code & 0xFF) == SQLITE_BUSY; }

private:
    struct Closer {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };

    std::unique_ptr<sqlite3, Closer> m_handle;
    int m_code = SQLITE_OK;
};

}  // namespace quillon::agent
