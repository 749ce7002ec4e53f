#include "data/DataTableColumns.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "base/Utf.h"

namespace quillon {
namespace {

constexpr std::size_t kLongestNumber = 32;

}  // namespace

DataTableColumns::DataTableColumns(const DataTable& table) {
    for (const std::string& name : table.GetColumnNames()) Add(name);
    for (const VariantList& row : table) {
        std::size_t position = 0;
        for (const Variant& cell : row) {
            if (IndexOf(position++, cell.GetName()) == m_names.size()) Add(cell.GetName());
        }
    }
    m_cells.resize(m_names.size());
    MakeShownNames();
}

void DataTableColumns::Add(const std::string& name) {
    if (m_indices.emplace(name, m_names.size()).second) m_names.push_back(name);
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

/// Rows mostly have the columns' order, so the cell's own position is tried first.
std::size_t DataTableColumns::IndexOf(std::size_t guess, const std::string& name) const {
    if (guess < m_names.size() && m_names[guess] == name) return guess;
    const auto found = m_indices.find(name);
    return found != m_indices.end() ? found->second : m_names.size();
}

const std::vector<const Variant*>& DataTableColumns::CellsOf(const VariantList& row) {
    std::fill(m_cells.begin(), m_cells.end(), nullptr);
    std::size_t position = 0;
    for (const Variant& cell : row) {
        const Variant*& slot = m_cells[IndexOf(position++, cell.GetName())];
        if (slot == nullptr) slot = &cell;
    }
    return m_cells;
}

const std::vector<DataTableColumns::Placed>& DataTableColumns::Place(const VariantList& row) {
    m_placed.clear();
    bool sorted = true;
    std::size_t position = 0;
    for (const Variant& cell : row) {
        const std::size_t column = IndexOf(position++, cell.GetName());
        sorted = sorted && (m_placed.empty() || m_placed.back().column < column);
        m_placed.push_back({column, &cell});
    }
    if (!sorted) {
        std::stable_sort(m_placed.begin(), m_placed.end(),
                         [](const Placed& a, const Placed& b) { return a.column < b.column; });
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
    if (text.find_first_not_of("-0123456789") == std::string_view::npos) output += ".0";
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
