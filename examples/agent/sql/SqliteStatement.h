#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

#include "quillon/DataTable.h"
#include "sql/SqliteConnection.h"

namespace quillon::agent {

/// One prepared statement of a connection, which must outlive it. Failures are logged
/// where they happen.
class SqliteStatement {
public:
    enum StepResult { Row, Done, Failed };

    SqliteStatement() = default;
    /// Text that holds no statement, or more than one, is refused.
    SqliteStatement(const SqliteConnection& connection, const std::string& sql);

    bool IsPrepared() const { return m_handle != nullptr; }
    sqlite3_stmt* Get() const { return m_handle.get(); }
    /// Binds a text from 1 on; it must stay until the statement has run.
    void Bind(int index, const std::string& text) const;
    StepResult Step() const;
    /// Runs the statement; `table` becomes its rows. Cells have the kinds of the values:
    /// integer, double, text or null; a blob is a text of its bytes. On failure `table` stays.
    bool ReadRows(DataTable& table) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
    };

    void Prepare(const std::string& sql);
    bool HoldsMore(const char* rest) const;

    const SqliteConnection* m_connection = nullptr;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_handle;
};

}  // namespace quillon::agent
