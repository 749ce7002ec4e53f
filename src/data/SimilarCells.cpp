#include "data/SimilarCells.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "data/CellAccess.h"
#include "data/CellCounts.h"

namespace quillon {
namespace {

using Cells = std::span<const Variant>;

/// Up to this size comparing every pair is cheaper than hashing.
constexpr std::size_t kPairwiseLimit = 16;

bool AreSimilarByPairs(Cells left, Cells right) {
    std::array<const Variant*, kPairwiseLimit> candidates{};
    auto** const first = candidates.data();
    auto** const last =
        std::transform(right.begin(), right.end(), first, [](const Variant& cell) { return &cell; });
    auto** next = first;
    for (const Variant& cell : left) {
        auto** const match = std::find_if(
            next, last, [&](const Variant* candidate) { return CellAccess::Equal(cell, *candidate); });
        if (match == last) return false;
        std::swap(*match, *next++);
    }
    return true;
}

/// Finds cells by their names, each of which only one cell has. The hashes of names are known; that of a
/// value would have to be computed.
class CellsByName {
public:
    explicit CellsByName(Cells cells) : m_cells(cells), m_slots(std::bit_ceil(2 * cells.size() + 1)) {}

    /// Returns false when two cells have one name.
    bool AddAll() {
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            Slot& slot = SlotOf(m_cells[i]);
            if (slot.number != 0) return false;
            slot = {MarkOf(m_cells[i]), static_cast<std::uint32_t>(i + 1)};
        }
        return true;
    }

    /// Takes the cell that equals this one; returns false when there is none.
    bool Take(const Variant& cell) {
        Slot& slot = SlotOf(cell);
        if (slot.number == 0 || !CellAccess::Equal(m_cells[slot.number - 1], cell)) return false;
        slot.mark = ~slot.mark;  // nobody finds it again
        return true;
    }

private:
    struct Slot {
        std::uint32_t mark = 0;    // of the name
        std::uint32_t number = 0;  // of the cell, from 1; 0 in a free slot
    };

    static std::uint32_t MarkOf(const Variant& cell) {
        return static_cast<std::uint32_t>(CellAccess::NameHash(cell) >> 32);
    }

    /// Returns the slot of the cell with this name, else the free one for it.
    Slot& SlotOf(const Variant& cell) {
        const std::size_t mask = m_slots.size() - 1;
        const std::uint32_t mark = MarkOf(cell);
        for (std::size_t i = CellAccess::NameHash(cell) & mask;; i = (i + 1) & mask) {
            Slot& slot = m_slots[i];
            if (slot.number == 0) return slot;
            if (slot.mark == mark && CellAccess::SameName(m_cells[slot.number - 1], cell)) return slot;
        }
    }

    const Cells m_cells;
    std::vector<Slot> m_slots;
};

/// Returns nothing when two cells on the right have one name.
std::optional<bool> AreSimilarByName(Cells left, Cells right) {
    CellsByName names(right);
    if (!names.AddAll()) return std::nullopt;
    return std::all_of(left.begin(), left.end(), [&](const Variant& cell) { return names.Take(cell); });
}

bool AreSimilarByCounts(Cells left, Cells right) {
    CellCounts counts(right.size());
    const auto add = [&](const Variant& cell) { return counts.Add(cell); };
    return std::all_of(right.begin(), right.end(), add) &&
           std::all_of(left.begin(), left.end(), [&](const Variant& cell) { return counts.Remove(cell); });
}

}  // namespace

bool AreSimilar(Cells left, Cells right) {
    std::size_t same = 0;
    while (same < left.size() && CellAccess::Equal(left[same], right[same])) ++same;
    left = left.subspan(same);
    right = right.subspan(same);
    if (left.size() <= kPairwiseLimit) return AreSimilarByPairs(left, right);
    const std::optional<bool> similar = AreSimilarByName(left, right);
    return similar ? *similar : AreSimilarByCounts(left, right);
}

}  // namespace quillon
