#pragma once

#include <cstddef>

namespace quillon::platform {

/// Gives memory that was freed back to the system, as far as the heap keeps it. It takes some
/// milliseconds for each 100 MB, during which other threads may wait for memory. Does nothing while another
/// thread is at it.
void ReleaseFreeMemory() noexcept;

/// The bytes of a huge page.
constexpr std::size_t kHugePage = std::size_t{2} << 20;

/// Returns the memory of one huge page, whose address is a multiple of its size. The system may still use
/// small pages. Returns null when there is none: always on Windows, where huge pages take a privilege, and
/// under the address sanitizer, which does not look for pointers there.
void* MapHugePage() noexcept;
void UnmapHugePage(void* page) noexcept;

}  // namespace quillon::platform
