#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "data/CellAccess.h"
#include "quillon/DataTable.h"

namespace quillon {

/// The columns under which a table is written, and its rows' cells in their
/// order. Refers to the table's cells; the table must not change meanwhile.
class DataTableColumns {
public:
    explicit DataTableColumns(const DataTable& table);

    /// The names as the cells have them, those of GetColumnNames() first, each once.
    const std::vector<std::string>& Names() const { return m_names; }

    /// The names as an export writes them, those of GetColumnNames() first: valid UTF-8, each once. A
    /// name that its repair makes equal to another one gets a number.
    const std::vector<std::string>& ShownNames() const { return m_shown; }

    /// One pointer a column, null where the row has no such cell; valid until the next call.
    const std::vector<const Variant*>& CellsOf(const VariantList& row);

    /// Whether the rows have so few of the columns that most of a grid would be blank.
    bool IsRagged() const {
        return m_names.size() > kMostGridColumns && m_cellCount * 4 < m_rowCount * m_names.size();
    }

    /// The columns of which the row has a cell, in their order.
    std::vector<std::size_t> IndicesOf(const VariantList& row) {
        std::vector<std::size_t> indices;
        for (const Placed& placed : Place(row)) indices.push_back(placed.column);
        return indices;
    }

    /// Calls the visitor with the column and the cell of each cell that CellsOf() gives, by column. Its
    /// cost does not grow with the columns that the row lacks.
    template <class Visitor>
    void VisitCells(const VariantList& row, Visitor visitor) {
        for (const Placed& placed : Place(row)) visitor(placed.column, *placed.cell);
    }

private:
    static constexpr std::size_t kMostGridColumns = 32;

    struct Placed {
        std::size_t column;
        const Variant* cell;
    };

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    /// The name of the cell that was last at a place in a row, and its column.
    struct Found {
        const detail::SharedName* name = nullptr;
        std::size_t column = kNone;
    };

    std::size_t Add(const std::string& name);
    void MakeShownNames();
    /// Returns the column of a row's cell. Rows mostly share the names of the row before them.
    std::size_t IndexOf(std::size_t position, const Variant& cell) {
        Found& found = m_found[position];
        const auto* const name = CellAccess::NameOf(cell);
        if (found.name != name || found.column == kNone) found = {name, Add(cell.GetName())};
        return found.column;
    }
    /// The row's cells by column, the first of each name.
    const std::vector<Placed>& Place(const VariantList& row);

    std::vector<std::string> m_names;
    std::vector<std::string> m_shown;
    std::unordered_map<std::string, std::size_t> m_indices;
    std::vector<Found> m_found;  // as many as the longest row has cells
    std::size_t m_rowCount = 0, m_cellCount = 0;
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
