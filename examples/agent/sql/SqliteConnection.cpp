#include "sql/SqliteConnection.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "sql/SqliteStatement.h"
#include "system/PrivateFile.h"
#include "system/SystemErrorText.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kLongestShownStatement = 500;
/// Of a text, a blob and a row, in bytes. While a statement makes one, it cannot be stopped.
constexpr int kLongestValue = 256 << 20;
constexpr int kWriteFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
constexpr int kReadFlags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;
// What a checkpoint leaves of the log, of which one large transaction can make gigabytes.
constexpr const char* kLimitLog = "PRAGMA journal_size_limit=8388608";
constexpr const char* kReadSchema = "SELECT count(*) FROM sqlite_master";

/// Writes the path of a file that nobody can change as a URI: SQLite then needs no file beside it.
std::string ToImmutableUri(const std::string& systemPath) {
    std::string uri = "file://";
    if (!systemPath.starts_with('/')) uri += '/';
    for (const char c : systemPath) {
        if (c == '%' || c == '?' || c == '#') {
            uri += '%' + StringUtils::ByteArrayToHexString(reinterpret_cast<const unsigned char*>(&c), 1);
        } else {
            uri += c == '\\' ? '/' : c;
        }
    }
    return uri + "?immutable=1";
}

bool CannotOpen(int code) {
    const int primary = code & 0xFF;
    return primary == SQLITE_CANTOPEN || primary == SQLITE_READONLY || primary == SQLITE_PERM;
}

/// Whether a pragma holds for every connection of the process.
bool IsOfProcess(const char* pragma) {
    constexpr const char* kNames[] = {"data_store_directory", "hard_heap_limit", "soft_heap_limit",
                                      "temp_store_directory"};
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [pragma](const char* name) { return sqlite3_stricmp(name, pragma) == 0; });
}

/// ATTACH, and VACUUM with a file, would reach others; VACUUM alone attaches one without a name.
/// `use` learns what a statement does to the transaction, however it is written.
int Authorize(void* use, int action, const char* word, const char* value, const char*, const char*) {
    auto& found = *static_cast<TransactionUse*>(use);
    if (action == SQLITE_SAVEPOINT) found = TransactionUse::MovesSavepoint;
    if (action == SQLITE_TRANSACTION && word != nullptr)
        found = std::string_view(word) == "BEGIN" ? TransactionUse::Begins : TransactionUse::Ends;
    if (action == SQLITE_PRAGMA && value != nullptr && IsOfProcess(word)) return SQLITE_DENY;
    const bool isNameless = word != nullptr && *word == '\0';
    return action == SQLITE_ATTACH && !isNameless ? SQLITE_DENY : SQLITE_OK;
}

}  // namespace

std::string QuoteIdentifier(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

SqliteConnection::SqliteConnection(std::string name) : m_name(std::move(name)) {}

/// Once: a query that hands its rows out may go on after somebody has opened the file anew.
void SqliteConnection::MakeWatch(int busyMilliseconds) {
    if (!m_watch) m_watch = std::make_unique<SqliteWatch>(SqliteWatch::Milliseconds(busyMilliseconds));
}

int SqliteConnection::Open(const std::string& libraryPath, int busyMilliseconds, Access access) {
    MakeWatch(busyMilliseconds);
    const int code = access == Access::ReadOnly ? OpenForReading(libraryPath) : OpenForWriting(libraryPath);
    if (code != SQLITE_OK) LogFailure("open " + libraryPath);
    return code;
}

int SqliteConnection::OpenInMemory(const std::string& memoryName, int busyMilliseconds) {
    MakeWatch(busyMilliseconds);
    int code = OpenHandle("file:/" + memoryName + "?vfs=memdb", kWriteFlags | SQLITE_OPEN_URI);
    if (code == SQLITE_OK) code = sqlite3_exec(Get(), kReadSchema, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) LogFailure("open " + memoryName);
    return code;
}

/// SQLite itself opens a file for reading when it cannot be written.
int SqliteConnection::OpenForWriting(const std::string& libraryPath) {
    MakePrivateFile(libraryPath);  // the log takes over the file's mode
    const int code = OpenHandle(PathUtils::ToSystemPath(libraryPath), kWriteFlags);
    if (code != SQLITE_OK) return code;
    return sqlite3_db_readonly(Get(), "main") == 1 ? OpenForReading(libraryPath) : Prepare();
}

int SqliteConnection::OpenHandle(const std::string& file, int flags) {
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &handle, flags, nullptr);
    m_handle.reset(handle);
    if (code != SQLITE_OK) return code;
    m_watch->Attach(Get());
    sqlite3_set_authorizer(Get(), &Authorize, &m_use);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_limit(Get(), SQLITE_LIMIT_LENGTH, kLongestValue);
    return SQLITE_OK;
}

int SqliteConnection::Prepare() {
    for (const char* sql : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL", kLimitLog, kReadSchema}) {
        const int code = sqlite3_exec(Get(), sql, nullptr, nullptr, nullptr);
        if (code != SQLITE_OK) return code;
    }
    return SQLITE_OK;
}

/// With its log, when that is there: only without one the file alone is the whole database.
int SqliteConnection::OpenForReading(const std::string& libraryPath) {
    int code = OpenHandle(PathUtils::ToSystemPath(libraryPath), kReadFlags);
    if (code == SQLITE_OK) code = sqlite3_exec(Get(), kReadSchema, nullptr, nullptr, nullptr);
    if (CannotOpen(code) && !FileSystemUtils::Exists(libraryPath + "-wal")) {
        code = OpenHandle(ToImmutableUri(PathUtils::ToSystemPath(libraryPath)), kReadFlags);
        if (code == SQLITE_OK) code = sqlite3_exec(Get(), kReadSchema, nullptr, nullptr, nullptr);
    }
    auto* const logger = ServiceLocator::Get<ICLogger>(true);
    if (code == SQLITE_OK && logger != nullptr)
        logger->Warn("Database '%s' can only be read (%s)", LogText::OneLine(m_name).c_str(),
                     LogText::OneLine(libraryPath).c_str());
    return code;
}

void SqliteConnection::Close(bool mayTidy) {
    auto* const logger = ServiceLocator::Get<ICLogger>(true);
    if (IsInTransaction() && logger != nullptr)
        logger->Warn("Database '%s' is closed inside a transaction, which is rolled back",
                     LogText::OneLine(m_name).c_str());
    if (!mayTidy && IsOpen()) sqlite3_db_config(Get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    m_handle.reset();
}

bool SqliteConnection::HasMoved() const {
    int hasMoved = 0;
    return sqlite3_file_control(Get(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved) == SQLITE_OK &&
           hasMoved != 0;
}

bool SqliteConnection::Execute(const std::string& sql) const {
    SqliteStatement statement(*this, sql);
    auto step = SqliteStatement::Failed;
    if (statement.IsPrepared()) {
        do step = statement.Step();
        while (step == SqliteStatement::Row);
    }
    return step == SqliteStatement::Done;
}

void SqliteConnection::LogFailure(std::string_view sql) const {
    std::string text = sqlite3_errmsg(Get());  // also tells of a handle for which there was no memory
    const int primary = sqlite3_errcode(Get()) & 0xFF;
    const int reason = IsOpen() ? sqlite3_system_errno(Get()) : 0;
    const bool isOfSystem = primary == SQLITE_CANTOPEN || primary == SQLITE_IOERR;
    if (isOfSystem && reason != 0) text += ": " + SystemErrorText(reason);
    if (primary == SQLITE_INTERRUPT && m_watch->Reason() != nullptr)
        text += std::string(", because ") + m_watch->Reason();
    LogError(text, sql);
}

void SqliteConnection::LogError(const std::string& text, std::string_view sql) const {
    if (auto* const logger = ServiceLocator::Get<ICLogger>(true))
        logger->Error("Database '%s': %s (%s)", LogText::OneLine(m_name).c_str(),
                      LogText::OneLine(text).c_str(),
                      LogText::OneLine(LogText::TruncateUtf8(sql, kLongestShownStatement)).c_str());
}

SqliteSavepoint::SqliteSavepoint(const SqliteConnection& connection)
    : m_connection(connection), m_isOpen(connection.Execute("SAVEPOINT quillon")) {}

SqliteSavepoint::~SqliteSavepoint() {
    // After some failures SQLite has undone the whole transaction by itself.
    if (!m_isOpen || !m_connection.IsInTransaction()) return;
    sqlite3_exec(m_connection.Get(), "ROLLBACK TO quillon; RELEASE quillon", nullptr, nullptr, nullptr);
}

bool SqliteSavepoint::Release() {
    if (!m_connection.Execute("RELEASE quillon")) return false;
    m_isOpen = false;
    return true;
}

}  // namespace quillon::agent
