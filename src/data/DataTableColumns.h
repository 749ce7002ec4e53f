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

    /// Unique, those of GetColumnNames() first.
    const std::vector<std::string>& Names() const { return m_names; }

    /// One pointer a column, null where the row has no such cell; valid until the next call.
    const std::vector<const Variant*>& CellsOf(const VariantList& row);

private:
    void Add(const std::string& name);
    std::size_t IndexOf(std::size_t guess, const std::string& name) const;

    std::vector<std::string> m_names;
    std::unordered_map<std::string, std::size_t> m_indices;
    std::vector<const Variant*> m_cells;
};

/// The shortest text that reads back as the same number, with a point or an
/// exponent so that it is no integer.
void AppendDouble(std::string& output, double value);
void AppendInteger(std::string& output, long long value);

/// `text` itself when it is valid UTF-8, else its repaired form in `buffer`.
std::string_view ValidUtf8(std::string_view text, std::string& buffer);
/// Returns the text after its byte-order mark, if it has one.
std::string_view WithoutByteOrderMark(std::string_view text);

}  // namespace quillon
