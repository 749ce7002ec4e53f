#include "sql/SqliteEngine.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "system/DatabaseLocks.h"

namespace quillon::agent {

namespace {

void LogError(const std::string& text) {
    if (auto* const logger = ServiceLocator::Get<ICLogger>(true))
        logger->Error("%s", LogText::OneLine(text).c_str());
}

}  // namespace

SqliteEngine::SqliteEngine(DatabaseFolder folder, int busyMilliseconds)
    : m_folder(std::move(folder)), m_busyMilliseconds(busyMilliseconds) {
    KeepDatabaseLocks();
}
SqliteEngine::SqliteEngine(InMemory, int busyMilliseconds) : m_busyMilliseconds(busyMilliseconds) {}
SqliteEngine::~SqliteEngine() = default;

ISqliteDatabase* SqliteEngine::OpenDatabase(std::int32_t, const std::string& databaseName) {
    auto database = m_folder ? OpenFile(*m_folder, databaseName) : OpenInMemory(databaseName);
    if (!database) return nullptr;
    const std::lock_guard lock(m_mutex);
    return m_databases.emplace_back(std::move(database)).get();
}

std::unique_ptr<SqliteDatabase> SqliteEngine::OpenFile(const DatabaseFolder& folder,
                                                       const std::string& databaseName) const {
    const auto file = folder.FileOf(databaseName);
    if (!file) {
        LogError("Database '" + databaseName + "': the name is empty or too long");
        return nullptr;
    }
    return SqliteDatabase::Open(databaseName, folder, *file, m_busyMilliseconds);
}

/// The first connection of each name stays: without one the database would go.
std::unique_ptr<SqliteDatabase> SqliteEngine::OpenInMemory(const std::string& databaseName) {
    const std::string name = StringUtils::ToLowercase(databaseName);
    const std::string key =
        StringUtils::ByteArrayToHexString(reinterpret_cast<const unsigned char*>(name.data()), name.size());
    char memoryName[32];
    std::snprintf(memoryName, sizeof memoryName, "%p-", static_cast<void*>(this));
    {
        const std::lock_guard lock(m_mutex);
        auto& kept = m_kept[key];
        if (!kept) kept = SqliteDatabase::OpenInMemory(databaseName, memoryName + key, m_busyMilliseconds);
    }
    return SqliteDatabase::OpenInMemory(databaseName, memoryName + key, m_busyMilliseconds);
}

void SqliteEngine::CloseDatabase(ISqliteDatabase* database) {
    if (Take(database) == nullptr) LogError("A database was closed that this engine has not opened");
}

bool SqliteEngine::Query(ISqliteDatabase& database, const SqlQuery& query, std::vector<std::string>& columns,
                         const SqlRowVisitor& visitor) {
    if (SqliteDatabase* const own = Find(database)) return own->Query(query, columns, visitor);
    LogError("A database was asked that this engine has not opened");
    return false;
}

SqliteDatabase* SqliteEngine::Find(const ISqliteDatabase& database) {
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_databases.begin(), m_databases.end(),
                                    [&database](const auto& own) { return own.get() == &database; });
    return found == m_databases.end() ? nullptr : found->get();
}

/// Takes a database out of the list. The caller closes it after the lock is released, because closing may
/// log.
std::unique_ptr<SqliteDatabase> SqliteEngine::Take(const ISqliteDatabase* database) {
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_databases.begin(), m_databases.end(),
                                    [database](const auto& own) { return own.get() == database; });
    if (found == m_databases.end()) return nullptr;
    auto taken = std::move(*found);
    m_databases.erase(found);
    return taken;
}

}  // namespace quillon::agent
