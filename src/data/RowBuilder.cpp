#include "quillon/detail/RowBuilder.h"

#include <utility>

#include "data/CellAccess.h"
#include "data/HeldName.h"

namespace quillon::detail {

struct RowBuilder::Names {
    std::vector<HeldName> held;
};

RowBuilder::RowBuilder(const std::vector<std::string>& names) : m_names(std::make_unique<Names>()) {
    m_names->held.reserve(names.size());
    for (const std::string& name : names) m_names->held.emplace_back(name);
    m_row.Reserve(names.size());
}

RowBuilder::~RowBuilder() = default;

void RowBuilder::AddText(std::size_t name, std::string_view value) {
    CellAccess::AddText(m_row, m_names->held[name], value);
}

void RowBuilder::AddInteger(std::size_t name, long long value) {
    CellAccess::AddInteger(m_row, m_names->held[name], value);
}

void RowBuilder::AddBoolean(std::size_t name, bool value) {
    CellAccess::AddBoolean(m_row, m_names->held[name], value);
}

void RowBuilder::AddDouble(std::size_t name, double value) {
    CellAccess::AddDouble(m_row, m_names->held[name], value);
}

void RowBuilder::EndRow(DataTable& table) {
    if (m_row.Size() == 0) return;
    table.AddRow(std::move(m_row));
    m_row.Reserve(m_names->held.size());
}

}  // namespace quillon::detail
