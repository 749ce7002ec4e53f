#pragma once

#include <cstdint>
#include <limits>

namespace quillon {

/// Counts one more holder; false when no more can be counted: wrapping to 0 would let the
/// next disable take away what all the others hold.
inline bool AddHolder(std::uint32_t& count) {
    if (count == std::numeric_limits<std::uint32_t>::max()) return false;
    ++count;
    return true;
}

}  // namespace quillon
