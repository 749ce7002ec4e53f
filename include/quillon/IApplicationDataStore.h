#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// Keeps tables and texts for a module, between its calls, in a local database with a name. A store
/// is used by one thread at a time; texts are UTF-8. What the database cannot do it logs itself, and
/// the operation returns false. A host that brings its own store implements this interface;
/// SqlApplicationDataStore implements it over the host's SQL engine.
///
/// @code
/// bool KeepSeen(IApplicationDataStore& store, const std::string& name) {
///     bool existed = false;
///     store.EnsureTableExists("Seen", {{"Name", IApplicationDataStore::Text}}, {"Name"}, existed);
///     DataTable row;
///     row.AddRow(VariantList(Variant("Name", name)));
///     return store.AddToTable("Seen", row);
/// }
/// @endcode
class QUILLON_API IApplicationDataStore {
public:
    /// Says what a column prefers to hold. Every value but the first two means text.
    enum ColumnDataType : std::int32_t { Integer = 0, Real = 1, Text = 2 };

    virtual ~IApplicationDataStore();

    /// Inserts the rows of `table`, all or none, into a table that exists. Cells go to the columns of
    /// their names. Returns whether they were inserted.
    virtual bool AddToTable(const std::string& tableName, DataTable& table) = 0;
    /// Makes the temporary table, in place of an older one of that name, with the columns of `table`
    /// and the types of its first row, and inserts the rows. Returns false, and makes nothing, for a
    /// table without rows. A temporary table lives until DeleteTempTable() or the store's end.
    virtual bool WriteDataToTempTable(const std::string& tableName, const DataTable& table) = 0;
    /// Deletes the temporary table; one that does not exist is no failure.
    virtual void DeleteTempTable(const std::string& tableName) = 0;
    /// Runs one SQL statement and returns whether it succeeded; `result` becomes its rows. Put names
    /// and foreign text in by QuoteTableName() and escaped quotes only.
    virtual bool ExecuteQuery(const std::string& sql, DataTable& result) = 0;
    /// Runs one SQL statement, drops its rows and returns whether it succeeded.
    virtual bool ExecuteNonQuery(const std::string& sql) = 0;
    /// Makes the table unless it exists. Sets `existed` to true when it does and leaves it alone
    /// otherwise, also when the table cannot be made, which is logged. A row that repeats the values of
    /// `uniqueColumns` replaces the older one; these names go into the statement as they are.
    virtual void EnsureTableExists(const std::string& tableName,
                                   const std::map<std::string, ColumnDataType>& columns,
                                   const std::vector<std::string>& uniqueColumns, bool& existed) = 0;
    /// Returns the name as text for an SQL statement.
    virtual std::string QuoteTableName(const std::string& tableName) = 0;
    /// Returns the name under which SQL finds a temporary table: one identifier, to be written between
    /// brackets.
    virtual std::string AddTempTablePrefix(const std::string& tableName) = 0;
    /// Starts a transaction, or ends it and keeps or undoes its changes. Transactions are not nested.
    virtual void BeginTransaction() const = 0;
    virtual void CommitTransaction() const = 0;
    virtual void RollbackTransaction() const = 0;
    /// Write and read a text that the database keeps under a name, beside its tables. A name that is
    /// not there leaves `value` alone.
    virtual void SetDatabaseProperty(const std::string& name, const std::string& value) = 0;
    virtual void GetDatabaseProperty(const std::string& name, std::string& value) = 0;
    /// Gives back the memory that the engine can spare.
    virtual void ShrinkMemory() = 0;

protected:
    IApplicationDataStore() = default;
    IApplicationDataStore(const IApplicationDataStore&) = default;
    IApplicationDataStore& operator=(const IApplicationDataStore&) = default;
};

}  // namespace quillon
