#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "data/CellAccess.h"

namespace quillon {

/// Counts how often each cell occurs among cells that live longer than this does.
class CellCounts {
public:
    /// Makes room for `count` cells.
    explicit CellCounts(std::size_t count) : m_slots(std::bit_ceil(2 * count + 1)) {}

    /// Returns false for a cell that equals nothing, not even itself: NaN.
    bool Add(const Variant& cell) {
        if (!CellAccess::Equal(cell, cell)) return false;
        Slot& slot = SlotOf(cell);
        slot.cell = &cell;
        ++slot.count;
        return true;
    }

    /// Counts an equal cell down; returns false when none is left.
    bool Remove(const Variant& cell) {
        Slot& slot = SlotOf(cell);
        if (slot.count == 0) return false;
        --slot.count;
        return true;
    }

private:
    struct Slot {
        const Variant* cell = nullptr;
        std::uint32_t hash = 0;
        std::uint32_t count = 0;
    };

    /// Returns the slot of an equal cell, else the free one for this cell.
    Slot& SlotOf(const Variant& cell) {
        const std::size_t hash = cell.Hash(), mask = m_slots.size() - 1;
        const auto mark = static_cast<std::uint32_t>(hash >> 32);
        for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
            Slot& slot = m_slots[i];
            if (slot.cell == nullptr) {
                slot.hash = mark;
                return slot;
            }
            if (slot.hash == mark && CellAccess::Equal(*slot.cell, cell)) return slot;
        }
    }

    std::vector<Slot> m_slots;
};

}  // namespace quillon
