#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "sql/SqliteWatch.h"

namespace quillon::agent {

/// The name as SQL text: one identifier, whatever it holds.
std::string QuoteIdentifier(std::string_view name);

/// What a statement does to the transaction. A savepoint may begin one, and its release end it.
enum class TransactionUse { None, Begins, Ends, MovesSavepoint };

/// One connection to a database file. Every failure of SQLite is logged once, at
/// Error, with its message and the beginning of the statement.
class SqliteConnection {
public:
    /// `name` is the database's in the log.
    explicit SqliteConnection(std::string name);
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;

    enum class Access { ReadWrite, ReadOnly };

    /// Opens the file, or makes it; a new one is the agent's account's alone. What was
    /// committed survives the process and the machine. Statements wait for another
    /// connection's lock for `busyMilliseconds`, and reach no other file. A file that
    /// cannot be written is opened for reading, with a Warn entry. SQLITE_OK, or why not.
    int Open(const std::string& libraryPath, int busyMilliseconds, Access access = Access::ReadWrite);
    /// Opens the database in memory of that name, which lasts as long as a connection of this process has
    /// it open.
    int OpenInMemory(const std::string& memoryName, int busyMilliseconds);
    /// A transaction that is still open is rolled back, with a Warn entry. Without
    /// `mayTidy` what SQLite keeps beside the file stays as it is.
    void Close(bool mayTidy = true);

    sqlite3* Get() const { return m_handle.get(); }
    SqliteWatch& Watch() const { return *m_watch; }
    const std::string& GetName() const { return m_name; }
    bool IsOpen() const { return m_handle != nullptr; }
    bool IsInTransaction() const { return IsOpen() && sqlite3_get_autocommit(Get()) == 0; }
    /// Returns what the statement that was prepared since the last call does to the transaction.
    TransactionUse TakeUse() const noexcept { return std::exchange(m_use, TransactionUse::None); }
    /// Returns whether the file is not any more where it was opened. Windows lets nobody move it.
    bool HasMoved() const;
    /// Runs one statement; its rows are thrown away.
    bool Execute(const std::string& sql) const;
    /// Logs what the connection's last call failed with.
    void LogFailure(std::string_view sql) const;
    void LogError(const std::string& text, std::string_view sql) const;

private:
    struct Closer {
        void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
    };

    void MakeWatch(int busyMilliseconds);
    int OpenHandle(const std::string& file, int flags);
    int OpenForWriting(const std::string& libraryPath);
    int Prepare();
    int OpenForReading(const std::string& libraryPath);

    std::string m_name;
    mutable TransactionUse m_use = TransactionUse::None;  // set by SQLite while it prepares a statement
    std::unique_ptr<SqliteWatch> m_watch;
    std::unique_ptr<sqlite3, Closer> m_handle;
};

/// A transaction within one that may be open already: undone unless it is released.
class SqliteSavepoint {
public:
    explicit SqliteSavepoint(const SqliteConnection& connection);
    ~SqliteSavepoint();
    SqliteSavepoint(const SqliteSavepoint&) = delete;
    SqliteSavepoint& operator=(const SqliteSavepoint&) = delete;

    bool IsOpen() const { return m_isOpen; }
    bool Release();

private:
    const SqliteConnection& m_connection;
    bool m_isOpen;
};

}  // namespace quillon::agent
