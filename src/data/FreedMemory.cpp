#include "data/FreedMemory.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>

#include "data/RowRegions.h"
#include "platform/HeapApi.h"

namespace quillon {
namespace {

constexpr std::size_t kMostKept = std::size_t{8} << 20;
/// Releases follow each other after a pause on average, but a few may come at once.
constexpr std::int64_t kPause = 1000, kAtOnce = 4;  // milliseconds, releases

std::int64_t Milliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

/// Returns whether a release may take place now, which is then counted.
bool TakeTurn() {
    static std::atomic<std::int64_t> next{0};  // when the next release would be due if none came early
    const std::int64_t now = Milliseconds();
    std::int64_t due = next.load(std::memory_order_relaxed);
    return due <= now + (kAtOnce - 1) * kPause &&
           next.compare_exchange_strong(due, std::max(due, now) + kPause);
}

}  // namespace

void CountFreedMemory(std::size_t bytes) noexcept {
    static std::atomic<std::size_t> freed{0};
    if (freed.fetch_add(bytes, std::memory_order_relaxed) + bytes < kMostKept || !TakeTurn()) return;
    freed.store(0, std::memory_order_relaxed);
    ReleaseFreeRegions();
    platform::ReleaseFreeMemory();
}

}  // namespace quillon
