#include "sql/SqliteConnection.h"

#include <utility>

#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "sql/SqliteStatement.h"
#include "system/SystemPath.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kLongestShownStatement = 500;
constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;

/// ATTACH, and VACUUM with a file, would reach others; VACUUM alone attaches one without a name.
int Authorize(void*, int action, const char* file, const char*, const char*, const char*) {
    const bool isNameless = file != nullptr && *file == '\0';
    return action == SQLITE_ATTACH && !isNameless ? SQLITE_DENY : SQLITE_OK;
}

/// Not in the middle of a UTF-8 character.
std::string Shortened(std::string_view sql) {
    if (sql.size() <= kLongestShownStatement) return std::string(sql);
    std::size_t end = kLongestShownStatement;
    while (end > 0 && (static_cast<unsigned char>(sql[end]) & 0xC0) == 0x80) --end;
    return std::string(sql.substr(0, end)) + "...";
}

}  // namespace

std::string QuoteIdentifier(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

SqliteConnection::SqliteConnection(std::string name) : m_name(std::move(name)) {}

int SqliteConnection::Open(const std::string& libraryPath, int busyMilliseconds) {
    const bool isNew = !FileSystemUtils::Exists(libraryPath);
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(ToSystemPath(libraryPath).c_str(), &handle, kFlags, nullptr);
    m_handle.reset(handle);
    if (code != SQLITE_OK) {
        LogFailure("open " + libraryPath);
        return code;
    }
    if (isNew) FileSystemUtils::SecureFile(libraryPath);  // before the log, which takes over the file's mode
    sqlite3_busy_timeout(Get(), busyMilliseconds);
    sqlite3_set_authorizer(Get(), &Authorize, nullptr);
    sqlite3_db_config(Get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    for (const char* sql :
         {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL", "SELECT count(*) FROM sqlite_master"}) {
        if (!Execute(sql)) return sqlite3_errcode(Get());
    }
    return SQLITE_OK;
}

void SqliteConnection::Close() {
    if (m_handle != nullptr && IsInTransaction()) {
        if (auto* const logger = ServiceLocator::Get<ICLogger>(true))
            logger->Warn("Database '%s' is closed inside a transaction, which is rolled back",
                         m_name.c_str());
    }
    m_handle.reset();
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
    LogError(sqlite3_errmsg(Get()), sql);  // also tells of a handle for which there was no memory
}

void SqliteConnection::LogError(const std::string& text, std::string_view sql) const {
    if (auto* const logger = ServiceLocator::Get<ICLogger>(true))
        logger->Error("Database '%s': %s (%s)", LogText::OneLine(m_name).c_str(),
                      LogText::OneLine(text).c_str(), LogText::OneLine(Shortened(sql)).c_str());
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
