#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

namespace quillon::agent {

/// A lock that one holder in all processes has at a time: the lock of SQLite on an empty file "FILE.lock".
/// It is held while the file of a database is opened, closed or moved: only so can a damaged file be looked
/// at again and moved while nobody opens it, and nobody deletes the log of a new file for that of the old
/// one. An agent holds that of its audit record as long as it runs.
class FileLock {
public:
    static constexpr int kWaitMilliseconds = 10'000;

    /// Waits for the lock for so long at most.
    explicit FileLock(const std::string& libraryPath, int waitMilliseconds = kWaitMilliseconds);

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
