#include "platform/HeapApi.h"

#include <sys/mman.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>  // defines __GLIBC__

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace quillon {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kHasHugePages = false;
#elif defined(__has_feature)
constexpr bool kHasHugePages = !__has_feature(address_sanitizer);
#else
constexpr bool kHasHugePages = true;
#endif

std::byte* Map(std::size_t bytes) {
    void* const memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<std::byte*>(memory);
}

bool IsAligned(const void* memory) {
    return reinterpret_cast<std::uintptr_t>(memory) % platform::kHugePage == 0;
}

/// Maps twice as much and gives the ends back.
std::byte* MapAligned() {
    constexpr std::size_t kAll = 2 * platform::kHugePage;
    std::byte* const memory = Map(kAll);
    if (memory == nullptr) return nullptr;
    const std::size_t before =
        (platform::kHugePage - reinterpret_cast<std::uintptr_t>(memory) % platform::kHugePage) %
        platform::kHugePage;
    if (before > 0) ::munmap(memory, before);
    ::munmap(memory + before + platform::kHugePage, kAll - before - platform::kHugePage);
    return memory + before;
}

}  // namespace

void platform::ReleaseFreeMemory() noexcept {
#ifdef __GLIBC__
    // Where the host has replaced the heap, the first call sets the C library's own one up, which two threads
    // must not do at once.
    static std::atomic_flag isReleasing;
    if (isReleasing.test_and_set(std::memory_order_acquire)) return;
    ::malloc_trim(0);
    isReleasing.clear(std::memory_order_release);
#endif
}

void* platform::MapHugePage() noexcept {
    if (!kHasHugePages) return nullptr;
    std::byte* page = Map(kHugePage);  // lies beside the one before, as a rule
    if (page != nullptr && !IsAligned(page)) {
        ::munmap(page, kHugePage);
        page = MapAligned();
    }
#ifdef MADV_HUGEPAGE
    if (page != nullptr) ::madvise(page, kHugePage, MADV_HUGEPAGE);
#endif
    return page;
}

void platform::UnmapHugePage(void* page) noexcept { ::munmap(page, kHugePage); }

}  // namespace quillon
