#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sql/DatabaseFolder.h"
#include "sql/SqliteDatabase.h"

namespace quillon::agent {

/// The agent's SQL engine: SQLite, a file for each database in one directory. Databases
/// that are still open when it ends are closed.
class SqliteEngine final : public ISqliteInstance, public ISqliteQueries {
public:
    static constexpr int kBusyMilliseconds = 5000;

    /// How long a statement waits while another connection holds the lock.
    explicit SqliteEngine(DatabaseFolder folder, int busyMilliseconds = kBusyMilliseconds);
    struct InMemory {};
    /// Keeps the databases in memory, from the first opening of each until the engine ends.
    explicit SqliteEngine(InMemory, int busyMilliseconds = kBusyMilliseconds);
    ~SqliteEngine() override;

    /// Every call opens a connection of its own.
    ISqliteDatabase* OpenDatabase(std::int32_t reserved, const std::string& databaseName) override;
    /// Null, and what is not this engine's, is logged at Error and left alone.
    void CloseDatabase(ISqliteDatabase* database) override;
    /// Refuses a database that is not this engine's, with an Error entry.
    bool Query(ISqliteDatabase& database, const SqlQuery& query, std::vector<std::string>& columns,
               const SqlRowVisitor& visitor) override;

private:
    std::unique_ptr<SqliteDatabase> OpenFile(const DatabaseFolder& folder,
                                             const std::string& databaseName) const;
    std::unique_ptr<SqliteDatabase> OpenInMemory(const std::string& databaseName);
    std::unique_ptr<SqliteDatabase> Take(const ISqliteDatabase* database);
    SqliteDatabase* Find(const ISqliteDatabase& database);

    const std::optional<DatabaseFolder> m_folder;
    const int m_busyMilliseconds;
    std::mutex m_mutex;
    std::map<std::string, std::unique_ptr<SqliteDatabase>> m_kept;  ///< by the names in memory
    std::vector<std::unique_ptr<SqliteDatabase>> m_databases;
};

}  // namespace quillon::agent
