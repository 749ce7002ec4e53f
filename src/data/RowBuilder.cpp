#include "quillon/detail/RowBuilder.h"

#include <utility>

#include "data/CellAccess.h"
#include "data/HeldName.h"

namespace quillon::detail {

struct RowBuilder::Names {
    std::vector<HeldName> held;
};

RowBuilder::RowBuilder(const std::vector<std::string>& names, DataTable& table)
    : m_names(std::make_unique<Names>()), m_table(table), m_begun(RowAllocator<VariantList>(table.m_memory)) {
    m_names->held.reserve(names.size());
    for (const std::string& name : names) m_names->held.emplace_back(name);
}

RowBuilder::~RowBuilder() = default;

VariantList& RowBuilder::BeginRow() {
    if (m_begun.empty()) m_begun.emplace_back();
    CellAccess::GiveBlock(m_begun.back(), m_names->held.size(), m_table.m_memory);
    m_row = &m_begun.back();
    return *m_row;
}

void RowBuilder::Add(Variant&& cell) { Row().Add(std::move(cell)); }

void RowBuilder::AddText(std::size_t name, std::string_view value) {
    CellAccess::AddText(Row(), m_names->held[name], value);
}

void RowBuilder::AddInteger(std::size_t name, long long value) {
    CellAccess::AddInteger(Row(), m_names->held[name], value);
}

void RowBuilder::AddBoolean(std::size_t name, bool value) {
    CellAccess::AddBoolean(Row(), m_names->held[name], value);
}

void RowBuilder::AddDouble(std::size_t name, double value) {
    CellAccess::AddDouble(Row(), m_names->held[name], value);
}

void RowBuilder::EndRow() {
    if (m_row == nullptr || m_row->Size() == 0) return;
    CellAccess::FitBlock(*m_row, m_table.m_memory);
    m_table.m_rows.splice(m_table.m_rows.end(), m_begun);
    m_table.MarkChanged();
    m_row = nullptr;
}

}  // namespace quillon::detail
