#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quillon/DataTable.h"

namespace quillon::detail {

/// Makes rows whose cells have names that are known before, which spares looking up the name of each cell.
/// For the library itself; one thread uses an object.
class RowBuilder {
public:
    explicit RowBuilder(const std::vector<std::string>& names);
    RowBuilder(const RowBuilder&) = delete;
    RowBuilder& operator=(const RowBuilder&) = delete;
    ~RowBuilder();

    /// Append a cell, whose name is given by its place in the list of names, to the row.
    void AddText(std::size_t name, std::string_view value);
    void AddInteger(std::size_t name, long long value);
    void AddBoolean(std::size_t name, bool value);
    void AddDouble(std::size_t name, double value);
    void Add(Variant&& cell) { m_row.Add(std::move(cell)); }

    /// Appends the row, if it has a cell, to a table, and begins another one.
    void EndRow(DataTable& table);

private:
    struct Names;

    const std::unique_ptr<Names> m_names;
    VariantList m_row;
};

}  // namespace quillon::detail
