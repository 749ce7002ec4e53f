#include "sql/SqliteStatement.h"

#include <string_view>
#include <typeindex>
#include <utility>
#include <vector>

#include "quillon/ICLogger.h"
#include "quillon/ServiceLocator.h"

namespace quillon::agent {

namespace {

/// SqlApplicationDataStore finds out by trying whether its temporary table is there.
bool IsExpected(const std::string& sql, std::string_view message) {
    return sql.starts_with("CREATE TEMP TABLE [temp.") && message.ends_with(" already exists");
}

std::vector<std::string> ColumnNames(sqlite3_stmt* statement) {
    std::vector<std::string> names;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        const char* const name = sqlite3_column_name(statement, i);
        names.emplace_back(name != nullptr ? name : "");
    }
    return names;
}

/// The bytes of a text or blob; none have no address.
std::string Bytes(sqlite3_value* value) {
    const auto* const bytes = static_cast<const char*>(sqlite3_value_blob(value));
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
    return bytes != nullptr ? std::string(bytes, size) : std::string();
}

/// By the column's value: every call by its number would look the column up and lock anew. That
/// needs a connection of one thread at a time.
void AddCell(sqlite3_value* value, const std::string& name, VariantList& row) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER:
            row.Add(name, static_cast<long long>(sqlite3_value_int64(value)));
            break;
        case SQLITE_FLOAT:
            row.Add(name, sqlite3_value_double(value));
            break;
        case SQLITE_NULL:
            row.AddEmptyCell(name, typeid(long long));
            break;
        default:
            row.Add(name, Bytes(value));
    }
}

}  // namespace

SqliteStatement::SqliteStatement(const SqliteConnection& connection, const std::string& sql)
    : m_connection(&connection) {
    if (sql.find('\0') != std::string::npos) {
        m_connection->LogError("a statement with a zero byte", sql);
    } else {
        Prepare(sql);
    }
}

/// SQLite reads up to the zero: told a length, it would copy the text.
void SqliteStatement::Prepare(const std::string& sql) {
    sqlite3_stmt* handle = nullptr;
    const char* rest = nullptr;
    const int code = sqlite3_prepare_v2(m_connection->Get(), sql.c_str(), -1, &handle, &rest);
    m_handle.reset(handle);
    if (code != SQLITE_OK) {
        const char* const message = sqlite3_errmsg(m_connection->Get());
        if (!IsExpected(sql, message)) return m_connection->LogError(message, sql);
        if (auto* const logger = ServiceLocator::Get<ICLogger>(true)) logger->Debug("%s", message);
    } else if (m_handle == nullptr) {
        m_connection->LogError("there is no statement", sql);
    } else if (HoldsMore(rest)) {
        m_handle.reset();
        m_connection->LogError("there is more than one statement", sql);
    }
}

/// Blanks, comments and semicolons are prepared to nothing.
bool SqliteStatement::HoldsMore(const char* rest) const {
    while (*rest != '\0') {
        sqlite3_stmt* handle = nullptr;
        const int code = sqlite3_prepare_v2(m_connection->Get(), rest, -1, &handle, &rest);
        sqlite3_finalize(handle);
        if (code != SQLITE_OK || handle != nullptr) return true;
    }
    return false;
}

void SqliteStatement::Bind(int index, const std::string& text) const {
    sqlite3_bind_text64(Get(), index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

SqliteStatement::StepResult SqliteStatement::Step() const {
    const int code = sqlite3_step(Get());
    if (code == SQLITE_ROW) return Row;
    if (code == SQLITE_DONE) return Done;
    m_connection->LogFailure(sqlite3_sql(Get()));
    return Failed;
}

bool SqliteStatement::ReadRows(DataTable& table) const {
    const std::vector<std::string> names = ColumnNames(Get());
    DataTable rows;
    rows.SetDefaultColumnNames(names);
    StepResult step = Step();
    for (; step == Row; step = Step()) {
        VariantList row;
        row.Reserve(names.size());
        int column = 0;
        for (const std::string& name : names) AddCell(sqlite3_column_value(Get(), column++), name, row);
        rows.AddRow(std::move(row));
    }
    if (step == Failed) return false;
    table = std::move(rows);
    return true;
}

}  // namespace quillon::agent
