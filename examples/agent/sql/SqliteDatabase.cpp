#include "sql/SqliteDatabase.h"

#include <utility>

#include "quillon/FileSystemUtils.h"
#include "sql/SqliteStatement.h"

namespace quillon::agent {

namespace {

constexpr const char* kProperties = "quillon_properties";

SqliteTable Locate(const std::string& tableName) {
    return {tableName.starts_with("temp.") ? "temp" : "main", tableName};
}

bool IsCorrupt(int code) {
    const int primary = code & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

/// With what SQLite keeps beside it, under the names by which SQLite would find it again.
bool MoveAside(const std::string& file) {
    const std::string aside = file + ".corrupt";
    for (const char* suffix : {"-wal", "-shm", ""}) {
        if (FileSystemUtils::Exists(aside + suffix)) FileSystemUtils::EraseFile(aside + suffix, true);
        if (!FileSystemUtils::Exists(file + suffix)) continue;
        if (!FileSystemUtils::RenameFile(file + suffix, aside + suffix, true)) return false;
    }
    return true;
}

}  // namespace

std::unique_ptr<SqliteDatabase> SqliteDatabase::Open(const std::string& name, const std::string& libraryPath,
                                                     int busyMilliseconds) {
    SqliteConnection connection(name);
    int code = connection.Open(libraryPath, busyMilliseconds);
    if (IsCorrupt(code)) {
        connection.Close();
        const bool isMoved = MoveAside(libraryPath);
        connection.LogError(isMoved ? "moved aside; it begins anew" : "cannot be moved aside", libraryPath);
        if (isMoved) code = connection.Open(libraryPath, busyMilliseconds);
    }
    if (code != SQLITE_OK) return nullptr;
    return std::unique_ptr<SqliteDatabase>(new SqliteDatabase(std::move(connection)));
}

SqliteDatabase::SqliteDatabase(SqliteConnection connection) : m_connection(std::move(connection)) {}
SqliteDatabase::~SqliteDatabase() {
    try {
        m_connection.Close();
    } catch (...) {  // a logger threw
    }
}

/// With the lock for writing, so that the wait for it is here and not in the middle.
void SqliteDatabase::BeginTransaction(std::int32_t) { m_connection.Execute("BEGIN IMMEDIATE"); }
void SqliteDatabase::CommitTransaction(std::int32_t) { m_connection.Execute("COMMIT"); }
void SqliteDatabase::RollbackTransaction(std::int32_t) { m_connection.Execute("ROLLBACK"); }
void SqliteDatabase::ShrinkMemory() { sqlite3_db_release_memory(m_connection.Get()); }

void SqliteDatabase::SetProperty(const std::string& name, const std::string& value) {
    const std::string table = Locate(kProperties).Quoted();
    if (!m_connection.Execute("CREATE TABLE IF NOT EXISTS " + table +
                              " (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID"))
        return;
    const SqliteStatement insert(m_connection, "INSERT OR REPLACE INTO " + table + " VALUES (?1, ?2)");
    if (!insert.IsPrepared()) return;
    insert.Bind(1, name);
    insert.Bind(2, value);
    insert.Step();
}

void SqliteDatabase::GetProperty(const std::string& name, std::string& value) {
    if (!TableExists(kProperties)) return;
    const SqliteStatement query(m_connection,
                                "SELECT value FROM " + Locate(kProperties).Quoted() + " WHERE name = ?1");
    if (!query.IsPrepared()) return;
    query.Bind(1, name);
    DataTable found;
    if (query.ReadRows(found) && !found.Empty()) value = found.begin()->Get(0).GetStringValue();
}

bool SqliteDatabase::AddToTable(const char* tableName, const DataTable& table, std::int32_t) {
    SqliteInserter inserter(m_connection, Locate(tableName));
    if (!inserter.Open()) return false;  // before the transaction: one that has read may not wait to write
    SqliteSavepoint savepoint(m_connection);
    if (!savepoint.IsOpen()) return false;
    for (const VariantList& row : table) {
        if (!inserter.Insert(row)) return false;
    }
    return savepoint.Release();
}

bool SqliteDatabase::TableExists(const std::string& tableName) {
    const SqliteStatement query(m_connection, "SELECT 1 FROM " + Locate(tableName).schema +
                                                  ".sqlite_master WHERE type IN ('table', 'view') AND "
                                                  "name = ?1 COLLATE NOCASE");
    if (!query.IsPrepared()) return false;
    query.Bind(1, tableName);
    return query.Step() == SqliteStatement::Row;
}

void SqliteDatabase::DropTable(const std::string& tableName) {
    m_connection.Execute("DROP TABLE IF EXISTS " + Locate(tableName).Quoted());
}

std::string SqliteDatabase::QuoteTableName(const std::string&, const std::string& tableName, std::int32_t) {
    return Locate(tableName).Quoted();
}

bool SqliteDatabase::ExecuteQuery(const std::string& sql, DataTable& result) {
    const SqliteStatement statement(m_connection, sql);
    return statement.IsPrepared() && statement.ReadRows(result);
}

}  // namespace quillon::agent
