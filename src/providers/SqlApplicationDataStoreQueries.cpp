#include <algorithm>
#include <utility>

#include "providers/SqlText.h"
#include "quillon/ICLogger.h"
#include "quillon/ISqliteInstance.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "quillon/SqlApplicationDataStore.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

bool HasColumn(const std::vector<std::string>& columns, const std::string& name) {
    return std::any_of(columns.begin(), columns.end(), [&name](const std::string& column) {
        return StringUtils::CompareCaseInsensitive(column, name);
    });
}

}  // namespace

bool SqlApplicationDataStore::Run(const SqlQuery& query, std::vector<std::string>& columns,
                                  const SqlRowVisitor& visitor) {
    if (!m_isOpen) return false;
    auto* const queries = ServiceLocator::Get<ISqliteQueries>(true);
    if (queries != nullptr) return queries->Query(*m_database, query, columns, visitor);
    if (m_logger != nullptr)
        m_logger->Error("The engine of database '%s' takes no parameters",
                        LogText::OneLine(m_databaseName).c_str());
    return false;
}

bool SqlApplicationDataStore::VisitRows(const SqlQuery& query, const SqlRowVisitor& visitor) {
    std::vector<std::string> columns;
    return Run(query, columns, visitor);
}

bool SqlApplicationDataStore::ExecuteQuery(const SqlQuery& query, DataTable& result) {
    std::vector<std::string> columns;
    DataTable rows;
    const auto add = [&rows](VariantList& row) {
        rows.AddRow(std::move(row));
        return true;
    };
    if (!Run(query, columns, add)) return false;
    rows.SetDefaultColumnNames(columns);
    result = std::move(rows);
    return true;
}

bool SqlApplicationDataStore::TryBegin() const {
    DataTable scratch;
    return m_isOpen && m_database->ExecuteQuery("BEGIN IMMEDIATE", scratch);
}

bool SqlApplicationDataStore::TryCommit() const {
    DataTable scratch;
    return m_isOpen && m_database->ExecuteQuery("COMMIT", scratch);
}

bool SqlApplicationDataStore::Check(std::vector<std::string>& faults) {
    DataTable found;
    if (!ExecuteQuery("PRAGMA integrity_check", found)) return false;
    bool isSound = true;
    for (const VariantList& row : found) {
        std::string text = row.Size() == 0 ? std::string() : row.Get(0).AsString();
        if (text == "ok") continue;
        faults.push_back(std::move(text));
        isSound = false;
    }
    return isSound;
}

bool SqlApplicationDataStore::EnsureColumns(const std::string& tableName,
                                            const std::map<std::string, ColumnDataType>& columns) {
    if (!TryBegin()) return false;
    if (AddColumns(tableName, columns) && TryCommit()) return true;
    RollbackTransaction();
    return false;
}

bool SqlApplicationDataStore::AddColumns(const std::string& tableName,
                                         const std::map<std::string, ColumnDataType>& columns) {
    DataTable none;
    if (!ExecuteQuery("SELECT * FROM " + QuoteTableName(tableName) + " LIMIT 0", none)) return false;
    const std::vector<std::string> existing = none.GetColumnNames();
    for (const auto& [name, type] : columns) {
        if (HasColumn(existing, name)) continue;
        if (!CanStandInBrackets(name)) return false;
        if (!ExecuteNonQuery("ALTER TABLE " + QuoteTableName(tableName) + " ADD COLUMN [" + name + "] " +
                             TypeText(type)))
            return false;
    }
    return true;
}

}  // namespace quillon
