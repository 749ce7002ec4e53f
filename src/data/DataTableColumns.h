#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "quillon/DataTable.h"

namespace quillon {

/// The columns under which a table is written, and its rows' cells in their
/// order. Refers to the table's cells; the table must not change meanwhile.
class DataTableColumns {
public:
    explicit DataTableColumns(const DataTable& table);

    /// The names as an export writes them, those of GetColumnNames() first: valid UTF-8, each once. A
    /// name that its repair makes equal to another one gets a number.
    const std::vector<std::string>& ShownNames() const { return m_shown; }

    /// One pointer a column, null where the row has no such cell; valid until the next call.
    const std::vector<const Variant*>& CellsOf(const VariantList& row);

    /// Calls the visitor with the column and the cell of each cell that CellsOf() gives, by column. Its
    /// cost does not grow with the columns that the row lacks.
    template <class Visitor>
    void VisitCells(const VariantList& row, Visitor visitor) {
        for (const Placed& placed : Place(row)) visitor(placed.column, *placed.cell);
    }

private:
    struct Placed {
        std::size_t column;
        const Variant* cell;
    };

    void Add(const std::string& name);
    void MakeShownNames();
    std::size_t IndexOf(std::size_t guess, const std::string& name) const;
    /// The row's cells by column, the first of each name.
    const std::vector<Placed>& Place(const VariantList& row);

    std::vector<std::string> m_names;
    std::vector<std::string> m_shown;
    std::unordered_map<std::string, std::size_t> m_indices;
    std::vector<const Variant*> m_cells;
    std::vector<Placed> m_placed;
};

/// The shortest text that reads back as the same number, with a point or an
/// exponent so that it is no integer.
void AppendDouble(std::string& output, double value);
void AppendInteger(std::string& output, long long value);

/// `text` itself when it is valid UTF-8, else its repaired form in `buffer`.
std::string_view ValidUtf8(std::string_view text, std::string& buffer);

}  // namespace quillon
