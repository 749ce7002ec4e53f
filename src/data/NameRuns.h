#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "data/CellAccess.h"

namespace quillon {

/// Copies or frees rows that have the same names one after the other. The uses of a name are counted
/// once for a run of rows and not for each cell, as an atomic operation costs more than a cell's copy.
class NameRuns {
public:
    NameRuns() = default;
    NameRuns(const NameRuns&) = delete;
    NameRuns& operator=(const NameRuns&) = delete;
    ~NameRuns() { Settle(); }

    /// Copies a row of a table that outlives this object into an empty one.
    void Copy(const VariantList& row, VariantList& copy, detail::RowMemory& memory) {
        if (row.Size() == 0) return;
        if (m_runs.size() < row.Size()) m_runs.resize(row.Size());
        CellAccess::GiveBlock(copy, row.Size(), memory);
        try {
            auto run = m_runs.begin();
            for (const Variant& cell : row) {
                CellAccess::CopyUncounted(cell, copy.end());
                CellAccess::CountElement(copy);
                Count(*run++, CellAccess::NameOf(cell), 1);
            }
        } catch (...) {
            Settle();  // before the copy gives back what it has not taken yet
            throw;
        }
    }

    /// Frees the cells of a row and returns how many bytes they took.
    std::size_t Free(VariantList& row, detail::RowMemory& memory) noexcept {
        std::size_t bytes = 0, place = 0;
        for (Variant& cell : row) {
            bytes += CellAccess::FreeValue(cell);
            detail::SharedName* const name = CellAccess::NameOf(cell);
            if (place < kReleased) {
                Count(m_released[place++], name, -1);
            } else {
                detail::DropUses(name);
            }
        }
        CellAccess::FreeBlock(row, memory);
        return bytes;
    }

private:
    /// Rows with more cells than this give the names of the others back one by one.
    static constexpr std::size_t kReleased = 32;

    struct Run {
        detail::SharedName* name = nullptr;
        std::ptrdiff_t uses = 0;  // still to be taken, or given back when negative
    };

    static void Count(Run& run, detail::SharedName* name, std::ptrdiff_t uses) noexcept {
        if (run.name != name) {
            Settle(run);
            run.name = name;
        }
        run.uses += uses;
    }

    static void Settle(Run& run) noexcept {
        const std::ptrdiff_t uses = std::exchange(run.uses, 0);
        if (uses > 0) detail::TakeUses(run.name, static_cast<std::size_t>(uses));
        if (uses < 0) detail::DropUses(run.name, static_cast<std::size_t>(-uses));
    }

    void Settle() noexcept {
        for (Run& run : m_runs) Settle(run);
        for (Run& run : m_released) Settle(run);
    }

    std::vector<Run> m_runs;
    Run m_released[kReleased] = {};
};

}  // namespace quillon
