#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "quillon/VariantList.h"
#include "sql/SqliteCell.h"
#include "sql/SqliteConnection.h"
#include "sql/SqliteStatement.h"

namespace quillon::agent {

/// Where a table is.
struct SqliteTable {
    std::string schema, name;

    std::string Quoted() const { return schema + '.' + QuoteIdentifier(name); }
};

/// Inserts rows into one table. A cell goes to the column of its name, else of its
/// bind name; the case of ASCII letters does not matter. Columns without a cell get
/// their default. A cell without a column, and two for one column, are refused.
class SqliteInserter {
public:
    SqliteInserter(const SqliteConnection& connection, SqliteTable table);

    /// Reads the columns; false, with an Error entry, when there is no such table.
    bool Open();
    bool Insert(const VariantList& row);

private:
    struct Column {
        std::string name;
        SqliteAffinity affinity = SqliteAffinity::None;
    };

    bool IsLikeTheLast(const VariantList& row) const;
    bool Prepare(const VariantList& row);
    const Column* FindColumn(const Variant& cell) const;
    bool Choose(const VariantList& row, std::string& columns, std::string& marks);

    const SqliteConnection& m_connection;
    const SqliteTable m_table;
    std::unordered_map<std::string, Column> m_columns;  // by name in lower case
    // These belong to the last row, in its order.
    SqliteStatement m_statement;
    std::vector<std::string> m_names;
    std::vector<SqliteAffinity> m_affinities;
};

}  // namespace quillon::agent
