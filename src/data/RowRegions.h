#pragma once

#include <cstddef>

namespace quillon {

/// The bytes of a slot.
constexpr std::size_t kRegionSlot = (std::size_t{256} << 10) - 64;

/// Returns memory of the size of a slot out of a huge page of the system, which costs a fraction of the
/// 64 small pages; null when the system gives none. All tables share the huge pages. Any thread may call
/// these.
void* TakeRegionSlot() noexcept;
void FreeRegionSlot(void* slot) noexcept;
/// Gives the huge pages in which no slot is taken back to the system.
void ReleaseFreeRegions() noexcept;
/// Returns how many slots are taken.
std::size_t TakenRegionSlots() noexcept;

}  // namespace quillon
