#include "sql/SqliteDatabase.h"

#include <utility>

#include "quillon/FileSystemUtils.h"
#include "quillon/StringUtils.h"
#include "sql/FileLock.h"

namespace quillon::agent {

namespace {

constexpr const char* kProperties = "quillon_properties";

constexpr const char* kAside = ".corrupt.";

SqliteTable Locate(const std::string& tableName) {
    return {tableName.starts_with("temp.") ? "temp" : "main", tableName};
}

bool IsCorrupt(int code) {
    const int primary = code & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

bool IsFree(const std::string& file) {
    return !FileSystemUtils::Exists(file) && !FileSystemUtils::Exists(file + "-wal") &&
           !FileSystemUtils::Exists(file + "-shm");
}

/// Returns where a damaged file can go; empty when there are already so many that another would fill
/// the disk.
std::string FreeNameBeside(const std::string& file) {
    constexpr int kMostCopies = 100;
    for (int number = 1; number <= kMostCopies; ++number) {
        std::string name = file + kAside + std::to_string(number);
        if (IsFree(name)) return name;
    }
    return {};
}

/// With what SQLite keeps beside it, under the names by which SQLite would find it again. The file is
/// the last, as it would be taken for a whole database without its log.
bool MoveAside(const std::string& file) {
    const std::string aside = FreeNameBeside(file);
    if (aside.empty()) return false;
    for (const char* suffix : {"-wal", "-shm", ""}) {
        if (!FileSystemUtils::Exists(file + suffix)) continue;
        if (!FileSystemUtils::RenameFile(file + suffix, aside + suffix, false)) return false;
    }
    return true;
}

/// The caller holds the lock, so that nobody else has the file open only to find it damaged as well.
int OpenOrBeginAnew(SqliteConnection& connection, const std::string& file, int busyMilliseconds) {
    const int code = connection.Open(file, busyMilliseconds);
    if (!IsCorrupt(code)) return code;
    connection.Close(false);
    const bool isMoved = MoveAside(file);
    connection.LogError(isMoved ? "moved aside; it begins anew" : "cannot be moved aside", file);
    return isMoved ? connection.Open(file, busyMilliseconds) : code;
}

}  // namespace

std::unique_ptr<SqliteDatabase> SqliteDatabase::Open(const std::string& name, const DatabaseFolder& folder,
                                                     const std::string& libraryPath, int busyMilliseconds) {
    std::unique_ptr<SqliteDatabase> database(
        new SqliteDatabase(name, Place{folder, libraryPath}, busyMilliseconds));
    return database->Open() ? std::move(database) : nullptr;
}

std::uint32_t SqliteDatabase::CountMovedAside(const std::string& libraryPath) {
    return FileSystemUtils::FindFiles(libraryPath + kAside + '*', nullptr);
}

std::unique_ptr<SqliteDatabase> SqliteDatabase::OpenInMemory(const std::string& name,
                                                             const std::string& memoryName,
                                                             int busyMilliseconds) {
    std::unique_ptr<SqliteDatabase> database(new SqliteDatabase(name, std::nullopt, busyMilliseconds));
    const int code = database->m_connection.OpenInMemory(memoryName, busyMilliseconds);
    return code == SQLITE_OK ? std::move(database) : nullptr;
}

SqliteDatabase::SqliteDatabase(const std::string& name, std::optional<Place> place, int busyMilliseconds)
    : m_place(std::move(place)), m_busyMilliseconds(busyMilliseconds), m_connection(name) {}
SqliteDatabase::~SqliteDatabase() {
    try {
        Close();
    } catch (...) {  // a logger threw
    }
}

bool SqliteDatabase::MakeFolder(const DatabaseFolder& folder) {
    if (folder.Make()) return true;
    const std::string reason = StringUtils::GetLastErrorAsString();
    m_connection.LogError("its directory cannot be made: " + reason, folder.GetPath());
    return false;
}

bool SqliteDatabase::Open() {
    if (!m_place || !MakeFolder(m_place->folder)) return false;
    const std::string& file = m_place->file;
    const FileLock lock(file);
    if (lock.IsBusy()) {
        m_connection.LogError("somebody else opens it and does not come to an end", file);
        return false;
    }
    const int code = lock.IsHeld()
                         ? OpenOrBeginAnew(m_connection, file, m_busyMilliseconds)
                         : m_connection.Open(file, m_busyMilliseconds, SqliteConnection::Access::ReadOnly);
    if (code != SQLITE_OK) m_connection.Close(false);
    return code == SQLITE_OK;
}

/// The last connection deletes the log, which must not be that of another file in the place of its own.
void SqliteDatabase::Close() {
    if (!m_connection.IsOpen()) return;
    if (!m_place) return m_connection.Close();
    const FileLock lock(m_place->file);
    m_connection.Close(lock.IsHeld() && !m_connection.HasMoved());
}

bool SqliteDatabase::IsReady() {
    if (m_connection.IsOpen() && !m_connection.HasMoved()) return true;
    if (m_connection.IsOpen() && m_place)
        m_connection.LogError("its file was moved away; it is opened anew", m_place->file);
    Close();
    Open();
    return false;
}

/// With the lock for writing, so that the wait for it is here and not in the middle. The caller cannot learn
/// of a failure: what it writes then would be kept one by one, and could not be rolled back.
void SqliteDatabase::BeginTransaction(std::int32_t) {
    m_isBegun = true;
    if (IsReady()) m_connection.Execute("BEGIN IMMEDIATE");
}

/// Says whether to go on with what changes the database. SQLite undoes a transaction by itself after some
/// failures, such as a full disk, and with its file goes the transaction as well.
bool SqliteDatabase::MayWrite(const std::string& what) {
    if (!m_isBegun || m_connection.IsInTransaction()) return true;
    m_connection.LogError("refused, as its transaction could not begin or was undone", what);
    return false;
}

bool SqliteDatabase::MayRun(const SqliteStatement& statement) {
    return statement.Use() == TransactionUse::Begins || sqlite3_stmt_readonly(statement.Get()) != 0 ||
           MayWrite(sqlite3_sql(statement.Get()));
}

/// A statement that was to end the transaction may have undone it although it failed.
void SqliteDatabase::NoteUse(const SqliteStatement& statement, bool isDone) {
    const TransactionUse use = statement.Use();
    if (use == TransactionUse::Ends || (isDone && use != TransactionUse::None))
        m_isBegun = m_connection.IsInTransaction();
}

/// The caller cannot learn of a failure: left open, the transaction would take in, and lose, all that is
/// written later.
void SqliteDatabase::CommitTransaction(std::int32_t) {
    m_isBegun = false;
    if (!IsReady() || m_connection.Execute("COMMIT") || !m_connection.IsInTransaction()) return;
    m_connection.LogError("what cannot be committed is rolled back", "COMMIT");
    m_connection.Execute("ROLLBACK");
}

void SqliteDatabase::RollbackTransaction(std::int32_t) {
    const bool isUndone = std::exchange(m_isBegun, false) && !m_connection.IsInTransaction();
    if (IsReady() && !isUndone) m_connection.Execute("ROLLBACK");
}

void SqliteDatabase::ShrinkMemory() {
    if (m_connection.IsOpen()) sqlite3_db_release_memory(m_connection.Get());
}

void SqliteDatabase::SetProperty(const std::string& name, const std::string& value) {
    if (!IsReady() || !MayWrite(name)) return;
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
    if (!query.ReadRows(found) || found.Empty()) return;
    const Variant& cell = found.begin()->Get(0);  // SQL may have written a number
    if (!cell.IsNull()) value = cell.AsString();
}

bool SqliteDatabase::AddToTable(const char* tableName, const DataTable& table, std::int32_t) {
    if (!IsReady() || !MayWrite(tableName)) return false;
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
    if (!IsReady()) return false;
    const SqliteStatement query(m_connection, "SELECT 1 FROM " + Locate(tableName).schema +
                                                  ".sqlite_master WHERE type IN ('table', 'view') AND "
                                                  "name = ?1 COLLATE NOCASE");
    if (!query.IsPrepared()) return false;
    query.Bind(1, tableName);
    return query.Step() == SqliteStatement::Row;
}

void SqliteDatabase::DropTable(const std::string& tableName) {
    if (IsReady() && MayWrite(tableName))
        m_connection.Execute("DROP TABLE IF EXISTS " + Locate(tableName).Quoted());
}

std::string SqliteDatabase::QuoteTableName(const std::string&, const std::string& tableName, std::int32_t) {
    return Locate(tableName).Quoted();
}

bool SqliteDatabase::ExecuteQuery(const std::string& sql, DataTable& result) {
    if (!IsReady()) return false;
    const SqliteStoppable stoppable(m_connection.Watch());
    const SqliteStatement statement(m_connection, sql);
    if (!statement.IsPrepared() || !MayRun(statement)) return false;
    const bool isDone = statement.ReadRows(result);
    NoteUse(statement, isDone);
    return isDone;
}

bool SqliteDatabase::Query(const SqlQuery& query, std::vector<std::string>& columns,
                           const SqlRowVisitor& visitor) {
    if (!IsReady()) return false;
    const SqliteStoppable stoppable(m_connection.Watch(), query.timeout);
    const SqliteStatement statement(m_connection, query.sql);
    if (!statement.IsPrepared() || !MayRun(statement) || !statement.Bind(query.parameters)) return false;
    columns = statement.ColumnNames();
    const bool isDone = statement.VisitRows(columns, query.maxRows, visitor);
    NoteUse(statement, isDone);
    return isDone;
}

}  // namespace quillon::agent
