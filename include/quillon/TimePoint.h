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

namespace detail {

/// Cuts a duration to ticks of a TimePoint, towards the past; one that is out of their range becomes its
/// end.
template <class Rep, class Period>
TimePoint::duration ToTicks(const std::chrono::duration<Rep, Period>& value) {
    using Ticks = TimePoint::duration;
    if constexpr (std::ratio_greater_equal_v<Period, Ticks::period> || std::is_floating_point_v<Rep>) {
        using Wide = std::chrono::duration<std::common_type_t<Rep, std::int64_t>, Period>;
        const auto most = std::chrono::duration_cast<Wide>(Ticks::max());
        // As a floating-point number the end of the range is rounded past it.
        if (value > most || (std::is_floating_point_v<Rep> && value == most)) return Ticks::max();
        if constexpr (std::is_signed_v<typename Wide::rep>) {
            if (value < std::chrono::duration_cast<Wide>(Ticks::min())) return Ticks::min();
        }
    }
    return std::chrono::floor<Ticks>(value);
}

/// Returns the sum, or the end of the range that it is past.
inline TimePoint SaturatedSum(TimePoint time, TimePoint::duration offset) {
    if (offset.count() > 0 && time > TimePoint::max() - offset) return TimePoint::max();
    if (offset.count() < 0 && time < TimePoint::min() - offset) return TimePoint::min();
    return time + offset;
}

}  // namespace detail

/// Converts a time point of any clock; what is finer than 100 nanoseconds is cut off towards the past, and
/// what is out of range becomes the end of the range. A clock that is not bound to the calendar, such as the
/// steady one, is compared with the system clock at this moment.
template <class Clock, class Duration>
TimePoint ToTimePoint(const std::chrono::time_point<Clock, Duration>& time) {
    using std::chrono::system_clock;
    using Ticks = TimePoint::duration;
    const std::chrono::time_point<Clock, Ticks> ticks(detail::ToTicks(time.time_since_epoch()));
    if constexpr (std::is_same_v<Clock, system_clock>) {
        return ticks;
    } else if constexpr (requires { Clock::to_sys(ticks); }) {
        const auto epoch = Clock::to_sys(std::chrono::time_point<Clock, Ticks>());
        return detail::SaturatedSum(std::chrono::floor<Ticks>(epoch), ticks.time_since_epoch());
    } else if constexpr (requires { Clock::to_sys(time); }) {
        return std::chrono::floor<Ticks>(Clock::to_sys(time));
    } else {
        const TimePoint begin(detail::ToTicks(system_clock::now().time_since_epoch()) -
                              detail::ToTicks(Clock::now().time_since_epoch()));
        return detail::SaturatedSum(begin, ticks.time_since_epoch());
    }
}

}  // namespace quillon
