#pragma once

#include <map>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/IApplicationDataStore.h"
#include "quillon/ISqliteQueries.h"

namespace quillon {

class ICLogger;

/// Implements IApplicationDataStore over the SQL engine that the host has registered
/// (ISqliteInstance.h). Without an engine, or when it cannot open the database, every operation does
/// nothing and returns false, or its argument where it returns a text. A new table is refused before
/// any SQL runs when its name or a column's cannot stand between brackets: it is empty or holds ']' or
/// a NUL. What an engine throws reaches the caller.
///
/// @code
/// // #include "quillon/DatabaseNames.h"
/// SqlApplicationDataStore store(DatabaseNames::InventoryDatabaseName);
/// const std::string sql = "SELECT Name FROM " + store.QuoteTableName("Seen");
/// DataTable found;
/// if (store.ExecuteQuery(sql, found)) std::cout << found;
/// @endcode
class QUILLON_API SqlApplicationDataStore : public IApplicationDataStore {
public:
    /// Opens the database, which it makes when there is none, and logs that at Debug; a failure is the
    /// Warn entry "Local database services not available; %s storage will not be possible". The
    /// registered logger is kept and must live as long.
    explicit SqlApplicationDataStore(const std::string& databaseName);
    /// Closes the database and logs one Warn entry for each temporary table that is left. A database
    /// whose engine is registered no more is left to that engine. Nothing is thrown.
    ~SqlApplicationDataStore() override;
    SqlApplicationDataStore(const SqlApplicationDataStore&) = delete;
    SqlApplicationDataStore& operator=(const SqlApplicationDataStore&) = delete;

    /// Implement IApplicationDataStore. A table that EnsureTableExists() cannot make gives the Warn
    /// entry "Could not create table '%s' for %s storage"; a temporary table that is there already is
    /// dropped with a Debug entry. A table that another thread or process makes meanwhile exists. A
    /// prefixed temporary name begins with "temp."; the case of ASCII letters does not matter in it.
    bool AddToTable(const std::string& tableName, DataTable& table) override;
    bool WriteDataToTempTable(const std::string& tableName, const DataTable& table) override;
    void DeleteTempTable(const std::string& tableName) override;
    bool ExecuteQuery(const std::string& sql, DataTable& result) override;
    bool ExecuteNonQuery(const std::string& sql) override;
    void EnsureTableExists(const std::string& tableName, const std::map<std::string, ColumnDataType>& columns,
                           const std::vector<std::string>& uniqueColumns, bool& existed) override;
    std::string QuoteTableName(const std::string& tableName) override;
    std::string AddTempTablePrefix(const std::string& tableName) override;
    void BeginTransaction() const override;
    void CommitTransaction() const override;
    void RollbackTransaction() const override;
    void SetDatabaseProperty(const std::string& name, const std::string& value) override;
    void GetDatabaseProperty(const std::string& name, std::string& value) override;
    void ShrinkMemory() override;

    /// Runs one SQL statement with values for its parameters, so that no text has to be quoted; `result`
    /// becomes its rows. Returns false, and leaves `result` alone, when the statement fails, ends at its
    /// limit of time, or the host's engine is not registered as ISqliteQueries (an Error entry).
    ///
    /// @code
    /// const SqlQuery query{"SELECT * FROM Seen WHERE Name = ?", VariantList(Variant("Name", name)), 10};
    /// DataTable found;
    /// if (store.ExecuteQuery(query, found)) std::cout << found;
    /// @endcode
    bool ExecuteQuery(const SqlQuery& query, DataTable& result);
    /// Hands the rows to a visitor, one by one, and keeps none. Otherwise as ExecuteQuery().
    bool VisitRows(const SqlQuery& query, const SqlRowVisitor& visitor);
    /// Start a transaction with the lock for writing, or end it and keep its changes, and return whether
    /// that succeeded. What TryCommit() cannot keep is undone by RollbackTransaction().
    [[nodiscard]] bool TryBegin() const;
    [[nodiscard]] bool TryCommit() const;
    /// Reads the whole database and adds a text for every fault that the engine finds to `faults`.
    /// Returns whether it could be read and there is none. That takes as long as reading the file.
    [[nodiscard]] bool Check(std::vector<std::string>& faults);
    /// Adds the columns that a table which exists does not have, all or none, as a newer version of a
    /// module needs it. Existing columns stay as they are, whatever their type. Returns whether the table
    /// now has all columns. It must not be called within a transaction.
    bool EnsureColumns(const std::string& tableName, const std::map<std::string, ColumnDataType>& columns);

private:
    void CloseDatabase();
    bool CreateTable(const std::string& tableName, const std::string& definitions);
    bool CreateTempTable(const std::string& name, const std::string& statement);
    std::vector<std::string>::iterator FindTempTable(const std::string& tableName);
    bool Run(const SqlQuery& query, std::vector<std::string>& columns, const SqlRowVisitor& visitor);
    bool AddColumns(const std::string& tableName, const std::map<std::string, ColumnDataType>& columns);

    ICLogger* m_logger;
    ISqliteDatabase* m_database = nullptr;  // the engine's; null when it could not be opened
    bool m_isOpen = false;
    std::string m_databaseName;
    std::vector<std::string> m_tempTables;  // names without prefix, in the order of creation
};

}  // namespace quillon
