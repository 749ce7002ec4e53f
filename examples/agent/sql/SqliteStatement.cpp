#include "sql/SqliteStatement.h"

#include <new>
#include <optional>
#include <string_view>
#include <typeindex>
#include <utility>
#include <vector>

#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "sql/SqliteCell.h"

namespace quillon::agent {

namespace {

struct TableName {
    const char* schema;
    std::string name;
};

/// Returns what stands before the closing quote, which is written twice within it.
std::string Unquoted(std::string_view text, char quote) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == quote && text.substr(i + 1, 1) != std::string_view(&quote, 1)) break;
        if (text[i] == quote) ++i;
        name += text[i];
    }
    return name;
}

/// Returns the table that a statement of SqlApplicationDataStore makes; nothing for any other statement.
std::optional<TableName> TableMadeBy(std::string_view sql) {
    constexpr std::string_view kTemporary = "CREATE TEMP TABLE [", kMain = "CREATE TABLE main.\"";
    if (sql.starts_with(kTemporary))
        return TableName{"temp",
                         std::string(sql.substr(kTemporary.size(), sql.find(']') - kTemporary.size()))};
    if (sql.starts_with(kMain)) return TableName{"main", Unquoted(sql.substr(kMain.size()), '"')};
    return std::nullopt;
}

/// The store finds out by trying whether its temporary table is there, and whether another thread was
/// quicker to make a table. As SQLite has no code for that, the table is looked for. Forgets the last error.
bool IsExpected(sqlite3* connection, std::string_view sql) {
    const auto table = TableMadeBy(sql);
    return table && sqlite3_table_column_metadata(connection, table->schema, table->name.c_str(), nullptr,
                                                  nullptr, nullptr, nullptr, nullptr, nullptr) == SQLITE_OK;
}

void LogExpected(const std::string& message) {
    if (auto* const logger = ServiceLocator::Get<ICLogger>(true))
        logger->Debug("%s", LogText::OneLine(message).c_str());
}

/// The bytes of a blob, or of a text in UTF-8, whatever the encoding of the database is. A blob of none has
/// no address.
std::string Bytes(sqlite3_value* value) {
    const bool isText = sqlite3_value_type(value) == SQLITE_TEXT;
    const void* const bytes = isText ? sqlite3_value_text(value) : sqlite3_value_blob(value);
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
    if (bytes == nullptr && (isText || size > 0)) throw std::bad_alloc();
    return std::string(static_cast<const char*>(bytes), size);
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
    m_connection->TakeUse();  // which was another statement's
    const int code = sqlite3_prepare_v2(m_connection->Get(), sql.c_str(), -1, &handle, &rest);
    m_use = m_connection->TakeUse();
    m_handle.reset(handle);
    if (code != SQLITE_OK) {
        const std::string message = sqlite3_errmsg(m_connection->Get());
        if (code != SQLITE_ERROR || !IsExpected(m_connection->Get(), sql))
            return m_connection->LogError(message, sql);
        LogExpected(message);
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
    const char* const sql = sqlite3_sql(Get());
    const std::string message = sqlite3_errmsg(m_connection->Get());
    if (code != SQLITE_ERROR || !TableMadeBy(sql)) {
        m_connection->LogFailure(sql);
    } else if (IsExpected(m_connection->Get(), sql)) {
        LogExpected(message);
    } else {
        m_connection->LogError(message, sql);
    }
    return Failed;
}

std::vector<std::string> SqliteStatement::ColumnNames() const {
    std::vector<std::string> names;
    for (int i = 0; i < sqlite3_column_count(Get()); ++i) {
        const char* const name = sqlite3_column_name(Get(), i);
        names.emplace_back(name != nullptr ? name : "");
    }
    return names;
}

const Variant* SqliteStatement::ValueOf(int index, const VariantList& values) const {
    const char* const name = sqlite3_bind_parameter_name(Get(), index);
    if (name != nullptr && *name != '?') return values.Find(name + 1);
    const auto position = static_cast<std::size_t>(index) - 1;
    return position < values.Size() ? &values.Get(position) : nullptr;
}

bool SqliteStatement::Bind(const VariantList& values) const {
    const int count = sqlite3_bind_parameter_count(Get());
    if (static_cast<std::size_t>(count) != values.Size()) {
        m_connection->LogError("the statement needs " + std::to_string(count) + " values and has " +
                                   std::to_string(values.Size()),
                               sqlite3_sql(Get()));
        return false;
    }
    for (int index = 1; index <= count; ++index) {
        const Variant* const value = ValueOf(index, values);
        if (value != nullptr && BindCell(Get(), index, SqliteAffinity::None, *value) == SQLITE_OK) continue;
        m_connection->LogError("no value for parameter " + std::to_string(index), sqlite3_sql(Get()));
        return false;
    }
    return true;
}

bool SqliteStatement::VisitRows(const std::vector<std::string>& names, std::uint64_t maxRows,
                                const SqlRowVisitor& visitor) const {
    StepResult step = Step();
    for (std::uint64_t rows = 1; step == Row; ++rows, step = Step()) {
        VariantList row;
        row.Reserve(names.size());
        int column = 0;
        for (const std::string& name : names) AddCell(sqlite3_column_value(Get(), column++), name, row);
        if (!visitor(row) || rows == maxRows) return Finish();
    }
    return step == Done;
}

/// Ends a statement that has more rows. What it has changed is committed only then, which may fail.
bool SqliteStatement::Finish() const {
    if (sqlite3_reset(Get()) == SQLITE_OK) return true;
    m_connection->LogFailure(sqlite3_sql(Get()));
    return false;
}

bool SqliteStatement::ReadRows(DataTable& table) const {
    const std::vector<std::string> names = ColumnNames();
    DataTable rows;
    rows.SetDefaultColumnNames(names);
    const auto add = [&rows](VariantList& row) {
        rows.AddRow(std::move(row));
        return true;
    };
    if (!VisitRows(names, 0, add)) return false;
    table = std::move(rows);
    return true;
}

}  // namespace quillon::agent
