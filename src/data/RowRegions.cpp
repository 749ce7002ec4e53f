#include "data/RowRegions.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>

#include "base/NeverDestroyed.h"
#include "platform/HeapApi.h"
#include "platform/ProcessStagesApi.h"

namespace quillon {
namespace {

constexpr std::size_t kDistance = std::size_t{256} << 10;
constexpr std::size_t kSlots = platform::kHugePage / kDistance;
constexpr std::uint32_t kAllFree = (1U << kSlots) - 1;

/// Stands at the beginning of a huge page; the slots follow at equal distances.
struct Region {
    Region* previous = nullptr;
    Region* next = nullptr;
    std::uint32_t free = kAllFree;  // a bit for each slot

    static constexpr std::size_t kHead = kDistance - kRegionSlot;
};
static_assert(sizeof(Region) <= Region::kHead);

/// Keeps the regions that have a free slot in a list, those without a taken one at its end.
class Regions {
public:
    void* Take() noexcept {
        const std::lock_guard lock(m_mutex);
        if (m_ends.next == &m_ends && !Add()) return nullptr;
        Region& region = *m_ends.next;
        const auto slot = static_cast<std::size_t>(std::countr_zero(region.free));
        region.free &= region.free - 1;
        if (region.free == 0) Unlink(region);
        ++m_taken;
        return reinterpret_cast<std::byte*>(&region) + slot * kDistance + Region::kHead;
    }

    void Free(void* slot) noexcept {
        const auto address = reinterpret_cast<std::uintptr_t>(slot);
        const std::uintptr_t within = address % platform::kHugePage;
        Region& region = *reinterpret_cast<Region*>(address - within);
        const std::lock_guard lock(m_mutex);
        const bool wasFull = region.free == 0;
        region.free |= 1U << within / kDistance;
        --m_taken;
        if (region.free == kAllFree) {
            Unlink(region);
            LinkBefore(m_ends, region);
        } else if (wasFull) {
            LinkBefore(*m_ends.next, region);
        }
    }

    void Release() noexcept {
        const std::lock_guard lock(m_mutex);
        while (m_ends.previous != &m_ends && m_ends.previous->free == kAllFree) {
            Region* const region = m_ends.previous;
            Unlink(*region);
            platform::UnmapHugePage(region);
        }
    }

    void BeforeFork() noexcept { m_mutex.lock(); }
    void AfterFork() noexcept { m_mutex.unlock(); }
    /// In the child of a fork no thread is left that could hold the mutex.
    void WithoutThreads() noexcept { new (&m_mutex) std::mutex; }

    std::size_t Taken() noexcept {
        const std::lock_guard lock(m_mutex);
        return m_taken;
    }

private:
    bool Add() noexcept {
        void* const memory = platform::MapHugePage();
        if (memory == nullptr) return false;
        LinkBefore(m_ends, *new (memory) Region);
        return true;
    }

    static void LinkBefore(Region& place, Region& region) noexcept {
        region.previous = place.previous;
        region.next = &place;
        place.previous->next = &region;
        place.previous = &region;
    }

    /// Does nothing to a region that is in no list.
    static void Unlink(Region& region) noexcept {
        if (region.next == nullptr) return;
        region.previous->next = region.next;
        region.next->previous = region.previous;
        region.previous = region.next = nullptr;
    }

    std::mutex m_mutex;
    Region m_ends{&m_ends, &m_ends, 0};
    std::size_t m_taken = 0;
};

/// Lives longer than every table.
Regions& TheRegions() {
    static base::NeverDestroyed<Regions> regions;
    return regions.Get();
}

constexpr platform::StageHandlers kHandlers = {
    [] { TheRegions().BeforeFork(); },
    [] { TheRegions().AfterFork(); },
    [] { TheRegions().WithoutThreads(); },
    [] {},
};

/// A fork takes the locks in the opposite order of their handlers. Nothing is called while the mutex of the
/// regions is held, so it must be taken last, and its handlers installed before those of the logger.
[[maybe_unused]] const bool kAreStagesHandled = [] {
    platform::HandleStages(kHandlers);
    return true;
}();

}  // namespace

void* TakeRegionSlot() noexcept { return TheRegions().Take(); }
void FreeRegionSlot(void* slot) noexcept { TheRegions().Free(slot); }
void ReleaseFreeRegions() noexcept { TheRegions().Release(); }
std::size_t TakenRegionSlots() noexcept { return TheRegions().Taken(); }

}  // namespace quillon
