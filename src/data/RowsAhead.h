#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "base/Prefetch.h"
#include "quillon/DataTable.h"

namespace quillon {

/// Goes before who reads the rows of a table one after the other, and has their memory fetched. Each row
/// lies somewhere else, so that waiting for the memory would cost more than all work on the row.
class RowsAhead {
public:
    using Position = DataTable::const_iterator;

    RowsAhead(Position first, Position end)
        : m_cells(Later(first, end, kCellsAhead)), m_list(Later(m_cells, end, kListAhead)), m_end(end) {}

    /// Takes the row that is read now; the others are expected to be about as long.
    void Pass(const VariantList& row) {
        if (m_cells == m_end) return;
        if (m_list != m_end && ++m_list != m_end) FetchPlace();
        const auto cells = reinterpret_cast<std::uintptr_t>((m_cells++)->begin());
        const std::size_t bytes = std::min<std::size_t>(row.Size(), kMostCells) * sizeof(Variant) + kLine;
        for (std::size_t offset = 0; offset < bytes; offset += kLine) Fetch(cells + offset);
    }

private:
    static void Fetch(std::uintptr_t address) { base::Prefetch(reinterpret_cast<const void*>(address)); }

    /// The list tells only its next row, but rows that were made one after the other mostly lie at equal
    /// distances.
    void FetchPlace() {
        const auto place = reinterpret_cast<std::uintptr_t>(&*m_list);
        Fetch(place);
        Fetch(place + kPlacesAhead * (place - m_lastPlace));
        m_lastPlace = place;
    }

    static constexpr std::ptrdiff_t kCellsAhead = 4, kListAhead = 4;
    static constexpr std::uintptr_t kPlacesAhead = 4;
    static constexpr std::size_t kLine = 64, kMostCells = 16;

    static Position Later(Position row, Position end, std::ptrdiff_t count) {
        for (; count > 0 && row != end; --count) ++row;
        return row;
    }

    Position m_cells, m_list;  // the row whose cells, and the one whose place in the list is fetched next
    const Position m_end;
    std::uintptr_t m_lastPlace = 0;
};

}  // namespace quillon
