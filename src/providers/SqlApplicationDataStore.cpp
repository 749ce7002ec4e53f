#include "quillon/SqlApplicationDataStore.h"

#include <algorithm>
#include <optional>

#include "providers/SqlText.h"
#include "quillon/ICLogger.h"
#include "quillon/ISqliteInstance.h"
#include "quillon/ISqliteQueries.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr const char* kTempTablePrefix = "temp.";

void AppendItem(std::string& list, const std::string& item) {
    if (!list.empty()) list += ',';
    list += item;
}

/// Returns the definitions of the columns; nothing when a name cannot stand between brackets.
std::optional<std::string> Definitions(
    const std::map<std::string, IApplicationDataStore::ColumnDataType>& columns) {
    std::string list;
    for (const auto& [name, type] : columns) {
        if (!CanStandInBrackets(name)) return std::nullopt;
        AppendItem(list, '[' + name + "] " + TypeText(type));
    }
    return list;
}

/// Does the same for the columns of a table, typed by the values of its first row.
std::optional<std::string> Definitions(const DataTable& table) {
    const VariantList& firstRow = *table.begin();
    std::string list;
    for (const std::string& name : table.GetColumnNames()) {
        if (!CanStandInBrackets(name)) return std::nullopt;
        const Variant* const value = firstRow.Find(name);
        AppendItem(list, '[' + name + "] " + (value != nullptr ? value->SqlTypeStr() : ""));
    }
    return list;
}

std::string UniqueClause(const std::vector<std::string>& columns) {
    if (columns.empty()) return {};
    std::string list;
    for (const std::string& name : columns) AppendItem(list, name);
    return ", UNIQUE (" + list + ") ON CONFLICT REPLACE";
}

void LogOpening(ICLogger& logger, const std::string& database, bool isOpen) {
    if (isOpen) {
        logger.Debug("Opened %s database", LogText::OneLine(database).c_str());
    } else {
        logger.Warn("Local database services not available; %s storage will not be possible",
                    LogText::OneLine(database).c_str());
    }
}

}  // namespace

IApplicationDataStore::~IApplicationDataStore() = default;
ISqliteInstance::~ISqliteInstance() = default;
ISqliteQueries::~ISqliteQueries() = default;
ISqliteDatabase::~ISqliteDatabase() = default;

SqlApplicationDataStore::SqlApplicationDataStore(const std::string& databaseName)
    : m_logger(detail::RegisteredLogger()), m_databaseName(databaseName) {
    if (auto* const engine = ServiceLocator::Get<ISqliteInstance>())
        m_database = engine->OpenDatabase(0, m_databaseName);
    m_isOpen = m_database != nullptr;
    if (m_logger == nullptr) return;
    try {
        LogOpening(*m_logger, m_databaseName, m_isOpen);
    } catch (...) {  // a logger of the host threw, and no destructor will close the database
        if (m_isOpen) ServiceLocator::Get<ISqliteInstance>()->CloseDatabase(m_database);
        throw;
    }
}

SqlApplicationDataStore::~SqlApplicationDataStore() {
    try {
        CloseDatabase();
        if (m_logger == nullptr) return;
        for (const std::string& name : m_tempTables) {
            m_logger->Warn("%s database leaked temporary table '%s'",
                           LogText::OneLine(m_databaseName).c_str(), LogText::OneLine(name).c_str());
        }
    } catch (...) {
        // An engine or a logger of the host may throw.
    }
}

/// An engine that is not registered any more has closed its databases.
void SqlApplicationDataStore::CloseDatabase() {
    if (!m_isOpen) return;
    auto* const engine = ServiceLocator::Get<ISqliteInstance>();
    if (engine == nullptr) return;
    engine->CloseDatabase(m_database);
    if (m_logger != nullptr) m_logger->Debug("Closed %s database", LogText::OneLine(m_databaseName).c_str());
}

bool SqlApplicationDataStore::AddToTable(const std::string& tableName, DataTable& table) {
    if (!m_isOpen) return false;
    if (tableName.find('\0') != std::string::npos) return false;  // the engine would take another table
    return m_database->AddToTable(tableName.c_str(), table, 0);
}

bool SqlApplicationDataStore::WriteDataToTempTable(const std::string& tableName, const DataTable& table) {
    if (!m_isOpen || table.Empty()) return false;
    const std::string name = AddTempTablePrefix(tableName);
    const auto definitions = Definitions(table);
    if (!CanStandInBrackets(tableName) || !definitions) return false;
    if (!CreateTempTable(name, "CREATE TEMP TABLE [" + name + "] (" + *definitions + ')')) return false;
    if (FindTempTable(tableName) == m_tempTables.end()) m_tempTables.push_back(tableName);
    return m_database->AddToTable(name.c_str(), table, 0);
}

bool SqlApplicationDataStore::CreateTempTable(const std::string& name, const std::string& statement) {
    if (ExecuteNonQuery(statement)) return true;
    if (m_database->TableExists(name)) {
        if (m_logger != nullptr)
            m_logger->Debug("Temporary table %s already exists; dropping and re-creating",
                            LogText::OneLine(name).c_str());
        m_database->DropTable(name);
    }
    return ExecuteNonQuery(statement);
}

void SqlApplicationDataStore::DeleteTempTable(const std::string& tableName) {
    if (!m_isOpen) return;
    m_database->DropTable(AddTempTablePrefix(tableName));
    const auto found = FindTempTable(tableName);
    if (found != m_tempTables.end()) m_tempTables.erase(found);
}

/// The engine tells names apart without regard to the case of ASCII letters.
std::vector<std::string>::iterator SqlApplicationDataStore::FindTempTable(const std::string& tableName) {
    return std::find_if(m_tempTables.begin(), m_tempTables.end(), [&tableName](const std::string& own) {
        return StringUtils::CompareCaseInsensitive(own, tableName);
    });
}

bool SqlApplicationDataStore::ExecuteQuery(const std::string& sql, DataTable& result) {
    return m_isOpen && m_database->ExecuteQuery(sql, result);
}

bool SqlApplicationDataStore::ExecuteNonQuery(const std::string& sql) {
    DataTable scratch;
    return ExecuteQuery(sql, scratch);
}

void SqlApplicationDataStore::EnsureTableExists(const std::string& tableName,
                                                const std::map<std::string, ColumnDataType>& columns,
                                                const std::vector<std::string>& uniqueColumns,
                                                bool& existed) {
    if (!m_isOpen) return;
    if (m_database->TableExists(tableName)) {
        existed = true;
        return;
    }
    const auto definitions = Definitions(columns);
    if (definitions && CreateTable(tableName, *definitions + UniqueClause(uniqueColumns))) return;
    if (definitions && m_database->TableExists(tableName)) {  // another thread was quicker
        existed = true;
        return;
    }
    if (m_logger != nullptr)
        m_logger->Warn("Could not create table '%s' for %s storage", LogText::OneLine(tableName).c_str(),
                       LogText::OneLine(m_databaseName).c_str());
}

bool SqlApplicationDataStore::CreateTable(const std::string& tableName, const std::string& definitions) {
    if (!CanStandInBrackets(tableName)) return false;
    DataTable scratch;
    return m_database->ExecuteQuery("CREATE TABLE " + QuoteTableName(tableName) + " (" + definitions + ')',
                                    scratch);
}

std::string SqlApplicationDataStore::QuoteTableName(const std::string& tableName) {
    return m_isOpen ? m_database->QuoteTableName(m_databaseName, tableName, 0) : tableName;
}

std::string SqlApplicationDataStore::AddTempTablePrefix(const std::string& tableName) {
    return kTempTablePrefix + tableName;
}

void SqlApplicationDataStore::BeginTransaction() const {
    if (m_isOpen) m_database->BeginTransaction(0);
}

void SqlApplicationDataStore::CommitTransaction() const {
    if (m_isOpen) m_database->CommitTransaction(0);
}

void SqlApplicationDataStore::RollbackTransaction() const {
    if (m_isOpen) m_database->RollbackTransaction(0);
}

void SqlApplicationDataStore::SetDatabaseProperty(const std::string& name, const std::string& value) {
    if (m_isOpen) m_database->SetProperty(name, value);
}

void SqlApplicationDataStore::GetDatabaseProperty(const std::string& name, std::string& value) {
    if (m_isOpen) m_database->GetProperty(name, value);
}

void SqlApplicationDataStore::ShrinkMemory() {
    if (m_isOpen) m_database->ShrinkMemory();
}

}  // namespace quillon
