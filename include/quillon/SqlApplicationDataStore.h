#pragma once

#include <map>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/IApplicationDataStore.h"

namespace quillon {

class ICLogger;
class ISqliteDatabase;

/// The store over the SQL engine that is registered with ServiceLocator. Without an
/// engine, or when it cannot open the database, construction warns, and from then on
/// every operation does nothing and answers false. A new table whose own or whose
/// column's name cannot stand between brackets (it is empty or holds ']' or a zero
/// byte) is refused before any SQL runs, as if the engine had refused it. What is
/// left of the temporary tables when the store ends is reported at Warn. A store whose engine was
/// unregistered leaves its database to that engine; it must not be used once the engine is gone, but may end.
class QUILLON_API SqlApplicationDataStore : public IApplicationDataStore {
public:
    explicit SqlApplicationDataStore(const std::string& databaseName);
    ~SqlApplicationDataStore() override;
    SqlApplicationDataStore(const SqlApplicationDataStore&) = delete;
    SqlApplicationDataStore& operator=(const SqlApplicationDataStore&) = delete;

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

private:
    void CloseDatabase();
    bool CreateTable(const std::string& tableName, const std::string& definitions);
    bool CreateTempTable(const std::string& name, const std::string& statement);

    ICLogger* m_logger;
    ISqliteDatabase* m_database = nullptr;  // the engine's; null when it could not be opened
    bool m_isOpen = false;
    std::string m_databaseName;
    std::vector<std::string> m_tempTables;  // names without prefix, in the order of creation
};

}  // namespace quillon
