#pragma once

#include <cstddef>

namespace quillon {

/// Counts memory that a table has freed. The heap keeps it for the next tables, but gives it back to the
/// system when it is more than 8 MiB. That happens once a second on average, as taking memory again costs
/// time too.
void CountFreedMemory(std::size_t bytes) noexcept;

}  // namespace quillon
