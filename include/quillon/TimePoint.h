#pragma once

#include <chrono>
#include <cstdint>
#include <ratio>
#include <type_traits>

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

/// Converts a time point of any clock; what is finer than 100 nanoseconds is cut off towards the past. A
/// clock that is not bound to the calendar, such as the steady one, is compared with the system clock at
/// this moment.
template <class Clock, class Duration>
TimePoint ToTimePoint(const std::chrono::time_point<Clock, Duration>& time) {
    using std::chrono::system_clock;
    if constexpr (std::is_same_v<Clock, system_clock>) {
        return std::chrono::floor<TimePoint::duration>(time);
    } else if constexpr (requires { Clock::to_sys(time); }) {
        return std::chrono::floor<TimePoint::duration>(Clock::to_sys(time));
    } else {
        const auto age = Clock::now() - time;
        return std::chrono::floor<TimePoint::duration>(system_clock::now() - age);
    }
}

}  // namespace quillon
