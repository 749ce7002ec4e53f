#pragma once

#include <algorithm>
#include <chrono>

namespace quillon::detail {

/// Returns the time at which a wait that begins now is over. One of more than a hundred years takes a
/// hundred, as the clock's range would end.
inline std::chrono::steady_clock::time_point DeadlineAfter(std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24) * 36500;
    return std::chrono::steady_clock::now() + std::min(limit, kLongest);
}

}  // namespace quillon::detail
