#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// A named local database of tables, for what a module keeps between its calls. A
/// store is used by one thread at a time; texts are UTF-8.
class QUILLON_API IApplicationDataStore {
public:
    /// What a column prefers to hold. Every value but the first two means text.
    enum ColumnDataType : std::int32_t { Integer = 0, Real = 1, Text = 2 };

    virtual ~IApplicationDataStore();

    /// Inserts the rows of `table` into a table that exists. Cells go to the columns
    /// of their names.
    virtual bool AddToTable(const std::string& tableName, DataTable& table) = 0;
    /// Makes the temporary table anew with the columns of `table` and inserts its rows.
    /// False, and nothing made, for a table without rows.
    virtual bool WriteDataToTempTable(const std::string& tableName, const DataTable& table) = 0;
    virtual void DeleteTempTable(const std::string& tableName) = 0;
    /// Runs one SQL statement; `result` becomes its rows.
    virtual bool ExecuteQuery(const std::string& sql, DataTable& result) = 0;
    virtual bool ExecuteNonQuery(const std::string& sql) = 0;
    /// Sets `existed` when the table is there already; otherwise leaves it alone and
    /// makes the table. A row that repeats the values of `uniqueColumns` replaces the
    /// older one; these names go into the statement as they are.
    virtual void EnsureTableExists(const std::string& tableName,
                                   const std::map<std::string, ColumnDataType>& columns,
                                   const std::vector<std::string>& uniqueColumns, bool& existed) = 0;
    /// The name as SQL text.
    virtual std::string QuoteTableName(const std::string& tableName) = 0;
    /// The name under which SQL finds a temporary table: one identifier, between brackets.
    virtual std::string AddTempTablePrefix(const std::string& tableName) = 0;
    virtual void BeginTransaction() const = 0;
    virtual void CommitTransaction() const = 0;
    virtual void RollbackTransaction() const = 0;
    /// Named texts beside the tables; a name that is not there leaves `value` alone.
    virtual void SetDatabaseProperty(const std::string& name, const std::string& value) = 0;
    virtual void GetDatabaseProperty(const std::string& name, std::string& value) = 0;
    /// Gives back what memory the engine can spare.
    virtual void ShrinkMemory() = 0;

protected:
    IApplicationDataStore() = default;
    IApplicationDataStore(const IApplicationDataStore&) = default;
    IApplicationDataStore& operator=(const IApplicationDataStore&) = default;
};

}  // namespace quillon
