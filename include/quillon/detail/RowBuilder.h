#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quillon/DataTable.h"

namespace quillon::detail {

/// Makes rows whose cells have names that are known before, which spares looking up the name of each cell.
/// For the library itself; one thread uses an object.
class RowBuilder {
public:
    /// Makes rows for a table, in whose memory they are built.
    RowBuilder(const std::vector<std::string>& names, DataTable& table);
    RowBuilder(const RowBuilder&) = delete;
    RowBuilder& operator=(const RowBuilder&) = delete;
    ~RowBuilder();

    /// Append a cell, whose name is given by its place in the list of names, to the row.
    void AddText(std::size_t name, std::string_view value);
    void AddInteger(std::size_t name, long long value);
    void AddBoolean(std::size_t name, bool value);
    void AddDouble(std::size_t name, double value);
    void Add(Variant&& cell);

    /// Appends the row, if it has a cell, to the table, and begins another one.
    void EndRow();

private:
    struct Names;

    VariantList& Row() { return m_row != nullptr ? *m_row : BeginRow(); }
    VariantList& BeginRow();

    const std::unique_ptr<Names> m_names;
    DataTable& m_table;
    DataTable::Rows m_begun;  // the row that is being built, if there is one
    VariantList* m_row = nullptr;
};

}  // namespace quillon::detail
