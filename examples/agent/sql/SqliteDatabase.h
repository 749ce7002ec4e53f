#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quillon/ISqliteInstance.h"
#include "quillon/ISqliteQueries.h"
#include "sql/DatabaseFolder.h"
#include "sql/SqliteConnection.h"
#include "sql/SqliteInserter.h"
#include "sql/SqliteStatement.h"

namespace quillon::agent {

/// A database in a file of its own. A table whose name begins with "temp." is a
/// temporary one, as SqlApplicationDataStore names them: it lives as long as the
/// database is open, and no other connection sees it. Properties are in the table
/// "quillon_properties".
class SqliteDatabase final : public ISqliteDatabase {
public:
    /// A file that is no database, or whose schema cannot be read, is moved aside to the first of
    /// "FILE.corrupt.1", "FILE.corrupt.2" ... that is free, with an Error entry, and a new one made.
    /// A file that was moved away while the database was open fails the next operation, with an
    /// Error entry, and those after it work on a new one. Null on failure.
    /// The folder of the file is made whenever it is missing.
    static std::unique_ptr<SqliteDatabase> Open(const std::string& name, const DatabaseFolder& folder,
                                                const std::string& libraryPath, int busyMilliseconds);
    /// Returns how many damaged files of the database there are that were moved aside.
    static std::uint32_t CountMovedAside(const std::string& libraryPath);
    /// The database in memory of that name; see SqliteConnection::OpenInMemory().
    static std::unique_ptr<SqliteDatabase> OpenInMemory(const std::string& name,
                                                        const std::string& memoryName, int busyMilliseconds);
    ~SqliteDatabase();

    /// When the transaction cannot begin, or a failure undoes it, everything that would change the database
    /// fails, with an Error entry, until the caller ends the transaction or begins one.
    void BeginTransaction(std::int32_t reserved) override;
    void CommitTransaction(std::int32_t reserved) override;
    void RollbackTransaction(std::int32_t reserved) override;
    void ShrinkMemory() override;
    void SetProperty(const std::string& name, const std::string& value) override;
    void GetProperty(const std::string& name, std::string& value) override;
    bool AddToTable(const char* tableName, const DataTable& table, std::int32_t reserved) override;
    bool TableExists(const std::string& tableName) override;
    void DropTable(const std::string& tableName) override;
    std::string QuoteTableName(const std::string& databaseName, const std::string& tableName,
                               std::int32_t reserved) override;
    /// One statement only, which ends with a failure when the host shuts down.
    bool ExecuteQuery(const std::string& sql, DataTable& result) override;
    /// As ISqliteQueries::Query().
    bool Query(const SqlQuery& query, std::vector<std::string>& columns, const SqlRowVisitor& visitor);

private:
    struct Place {
        DatabaseFolder folder;
        std::string file;
    };

    SqliteDatabase(const std::string& name, std::optional<Place> place, int busyMilliseconds);

    bool MakeFolder(const DatabaseFolder& folder);
    bool Open();
    void Close();
    bool IsReady();
    bool MayWrite(const std::string& what);
    bool MayRun(const SqliteStatement& statement);
    void NoteUse(const SqliteStatement& statement, bool isDone);

    const std::optional<Place> m_place;  ///< none in memory
    const int m_busyMilliseconds;
    SqliteConnection m_connection;
    bool m_isBegun = false;  ///< by the caller, whether SQLite has a transaction or not
};

}  // namespace quillon::agent
