#pragma once

namespace quillon::platform {

/// Gives memory that was freed back to the system, as far as the heap keeps it. It takes some
/// milliseconds for each 100 MB, during which other threads may wait for memory.
void ReleaseFreeMemory() noexcept;

}  // namespace quillon::platform
