#include "data/DataTableColumns.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "base/Utf.h"
#include "data/RowsAhead.h"

namespace quillon {
namespace {

constexpr std::size_t kLongestNumber = 32;

}  // namespace

DataTableColumns::DataTableColumns(const DataTable& table) : m_rowCount(table.GetNumberOfRows()) {
    for (const std::string& name : table.GetColumnNames()) Add(name);
    RowsAhead ahead(table.begin(), table.end());
    for (const VariantList& row : table) {
        ahead.Pass(row);
        if (m_found.size() < row.Size()) m_found.resize(row.Size());
        std::size_t position = 0;
        for (const Variant& cell : row) IndexOf(position++, cell);
        m_cellCount += position;
    }
    m_cells.resize(m_names.size());
    MakeShownNames();
}

/// Returns the index of a column, which is a new one when the name is.
std::size_t DataTableColumns::Add(const std::string& name) {
    const auto [entry, isNew] = m_indices.try_emplace(name, m_names.size());
    if (isNew) m_names.push_back(name);
    return entry->second;
}

void DataTableColumns::MakeShownNames() {
    m_shown = m_names;
    std::unordered_set<std::string> used;
    std::unordered_map<std::string, int> repetitions;
    const auto isInvalid = [](const std::string& name) {
        return base::FindInvalidUtf8(name) != std::string::npos;
    };
    if (std::none_of(m_names.begin(), m_names.end(), isInvalid)) return;
    for (const std::string& name : m_names) {
        if (!isInvalid(name)) used.insert(name);
    }
    for (std::string& name : m_shown) {
        if (!isInvalid(name)) continue;
        const std::string repaired = base::RepairUtf8(name);
        name = repaired;
        while (!used.insert(name).second) name = repaired + std::to_string(++repetitions[repaired] + 1);
    }
}

const std::vector<const Variant*>& DataTableColumns::CellsOf(const VariantList& row) {
    std::fill(m_cells.begin(), m_cells.end(), nullptr);
    std::size_t position = 0;
    for (const Variant& cell : row) {
        const Variant*& slot = m_cells[IndexOf(position++, cell)];
        if (slot == nullptr) slot = &cell;
    }
    return m_cells;
}

const std::vector<DataTableColumns::Placed>& DataTableColumns::Place(const VariantList& row) {
    m_placed.clear();
    bool sorted = true;
    std::size_t position = 0;
    for (const Variant& cell : row) {
        const std::size_t column = IndexOf(position++, cell);
        sorted = sorted && (m_placed.empty() || m_placed.back().column < column);
        m_placed.push_back({column, &cell});
    }
    if (!sorted) {
        // The cells lie in one block, so their addresses keep those of one column in their order.
        std::sort(m_placed.begin(), m_placed.end(), [](const Placed& a, const Placed& b) {
            return a.column != b.column ? a.column < b.column : a.cell < b.cell;
        });
        const auto same = [](const Placed& a, const Placed& b) { return a.column == b.column; };
        m_placed.erase(std::unique(m_placed.begin(), m_placed.end(), same), m_placed.end());
    }
    return m_placed;
}

void AppendDouble(std::string& output, double value) {
    char buffer[kLongestNumber];
    const auto end = std::to_chars(buffer, buffer + sizeof(buffer), value).ptr;
    const std::string_view text(buffer, static_cast<std::size_t>(end - buffer));
    output += text;
    const auto isNoPartOfInteger = [](char c) {
        return c == '.' || c > '9';
    };  // a point, an exponent, inf, nan
    if (std::none_of(text.begin(), text.end(), isNoPartOfInteger)) output += ".0";
}

void AppendInteger(std::string& output, long long value) {
    char buffer[kLongestNumber];
    output.append(buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr);
}

std::string_view ValidUtf8(std::string_view text, std::string& buffer) {
    if (base::FindInvalidUtf8(text) == std::string_view::npos) return text;
    buffer = base::RepairUtf8(text);
    return buffer;
}

}  // namespace quillon
