#pragma once

#include <chrono>
#include <cstdint>
#include <ratio>

namespace quillon {

/// A point on the system clock: 100-nanosecond ticks since 1970-01-01T00:00:00 UTC.
using TimePoint = std::chrono::time_point<std::chrono::system_clock,
                                          std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>>;

}  // namespace quillon
