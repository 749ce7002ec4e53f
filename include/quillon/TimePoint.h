#pragma once

#include <chrono>
#include <cstdint>
#include <ratio>

namespace quillon {

/// Marks a moment on the system clock: a signed 64-bit count of 100-nanosecond ticks since
/// 1970-01-01T00:00:00 UTC, so some 29,000 years either way. A default-made one is that moment;
/// TimePoint::min() stands for no time where a text is made of it.
///
/// It is a plain value. Other durations convert to it without a cast as long as nothing is
/// lost:
/// @code
/// const TimePoint later = TimePoint() + std::chrono::milliseconds(1500);
/// std::cout << later.time_since_epoch().count() << '\n';  // 15000000
/// @endcode
using TimePoint = std::chrono::time_point<std::chrono::system_clock,
                                          std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>>;

}  // namespace quillon
