#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/ISqliteQueries.h"
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
    /// Returns what it does to the transaction.
    TransactionUse Use() const { return m_use; }
    sqlite3_stmt* Get() const { return m_handle.get(); }
    /// Binds a text from 1 on; it must stay until the statement has run.
    void Bind(int index, const std::string& text) const;
    /// Binds the values to the parameters: to "?" in their order, to a named one that of its name. A
    /// value without a parameter, and a parameter without a value, are refused with an Error entry.
    bool Bind(const VariantList& values) const;
    StepResult Step() const;
    std::vector<std::string> ColumnNames() const;
    /// Runs the statement and hands its rows out, as ReadRows() makes them, until there is no more, the
    /// visitor returns false or `maxRows` are out; 0 is no limit. False when the statement fails.
    bool VisitRows(const std::vector<std::string>& names, std::uint64_t maxRows,
                   const SqlRowVisitor& visitor) const;
    /// Runs the statement; `table` becomes its rows. Cells have the kinds of the values:
    /// integer, double, text or null; a blob is a text of its bytes. On failure `table` stays.
    bool ReadRows(DataTable& table) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
    };

    void Prepare(const std::string& sql);
    const Variant* ValueOf(int index, const VariantList& values) const;
    bool HoldsMore(const char* rest) const;
    bool Finish() const;

    const SqliteConnection* m_connection = nullptr;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_handle;
    TransactionUse m_use = TransactionUse::None;
};

}  // namespace quillon::agent
