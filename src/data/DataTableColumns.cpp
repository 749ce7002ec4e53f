#include "data/DataTableColumns.h"

#include <algorithm>
#include <charconv>

#include "base/Utf.h"

namespace quillon {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
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
}

void DataTableColumns::Add(const std::string& name) {
    if (m_indices.emplace(name, m_names.size()).second) m_names.push_back(name);
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

std::string_view WithoutByteOrderMark(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    return text;
}

}  // namespace quillon
