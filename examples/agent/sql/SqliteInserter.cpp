#include "sql/SqliteInserter.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "quillon/StringUtils.h"

namespace quillon::agent {

SqliteInserter::SqliteInserter(const SqliteConnection& connection, SqliteTable table)
    : m_connection(connection), m_table(std::move(table)) {}

bool SqliteInserter::Open() {
    const SqliteStatement query(m_connection, "SELECT name, type FROM pragma_table_info(?1, ?2)");
    if (!query.IsPrepared()) return false;
    query.Bind(1, m_table.name);
    query.Bind(2, m_table.schema);
    DataTable columns;
    if (!query.ReadRows(columns)) return false;
    for (const VariantList& row : columns) {
        const std::string& name = row.Get(0).GetStringValue();
        m_columns[StringUtils::ToLowercase(name)] = {name, AffinityOf(row.Get(1).GetStringValue())};
    }
    if (m_columns.empty()) m_connection.LogError("no such table", m_table.Quoted());
    return !m_columns.empty();
}

bool SqliteInserter::Insert(const VariantList& row) {
    if (!m_statement.IsPrepared() || !IsLikeTheLast(row)) {
        if (!Prepare(row)) return false;
    }
    int index = 0;
    for (const Variant& cell : row) {
        const SqliteAffinity affinity = m_affinities[static_cast<std::size_t>(index)];
        if (BindCell(m_statement.Get(), ++index, affinity, cell) == SQLITE_OK) continue;
        m_connection.LogFailure(sqlite3_sql(m_statement.Get()));
        return false;
    }
    const bool isDone = m_statement.Step() == SqliteStatement::Done;
    sqlite3_reset(m_statement.Get());
    return isDone;
}

bool SqliteInserter::IsLikeTheLast(const VariantList& row) const {
    return std::equal(row.begin(), row.end(), m_names.begin(), m_names.end(),
                      [](const Variant& cell, const std::string& name) { return cell.GetName() == name; });
}

bool SqliteInserter::Prepare(const VariantList& row) {
    std::string columns, marks;
    if (!Choose(row, columns, marks)) return false;
    const std::string what =
        columns.empty() ? " DEFAULT VALUES" : " (" + columns + ") VALUES (" + marks + ')';
    m_statement = SqliteStatement(m_connection, "INSERT INTO " + m_table.Quoted() + what);
    return m_statement.IsPrepared();
}

const SqliteInserter::Column* SqliteInserter::FindColumn(const Variant& cell) const {
    auto found = m_columns.find(StringUtils::ToLowercase(cell.GetName()));
    if (found == m_columns.end()) found = m_columns.find(StringUtils::ToLowercase(cell.GetBindName()));
    return found != m_columns.end() ? &found->second : nullptr;
}

bool SqliteInserter::Choose(const VariantList& row, std::string& columns, std::string& marks) {
    m_names.clear();
    m_affinities.clear();
    std::unordered_set<const Column*> chosen;
    for (const Variant& cell : row) {
        const Column* const column = FindColumn(cell);
        if (column == nullptr || !chosen.insert(column).second) {
            const char* const what = column == nullptr ? "no column" : "two values for column";
            m_connection.LogError(std::string(what) + " '" + cell.GetName() + '\'', m_table.Quoted());
            return false;
        }
        if (!columns.empty()) columns += ',', marks += ',';
        columns += QuoteIdentifier(column->name);
        marks += '?';
        m_names.push_back(cell.GetName());
        m_affinities.push_back(column->affinity);
    }
    return true;
}

}  // namespace quillon::agent
