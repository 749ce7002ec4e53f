#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace quillon::platform {

/// A calendar date and time of day, in whichever zone the function says.
struct CalendarTime {
    int year;
    int month;  // 1-12
    int day;
    int hour;
    int minute;
    int second;
    int millisecond;
};

// A conversion that the system cannot make returns nothing.

std::optional<std::tm> LocalFields(std::int64_t epochSeconds);
/// Reads `local` as a wall-clock time with daylight saving time off.
std::optional<std::int64_t> EpochOfLocalFields(std::tm local);
/// Minutes east of UTC that are in force now, daylight saving time included.
std::optional<int> ZoneOffsetNow();

/// File times are 100-nanosecond ticks since 1601; those of 2^63 and more are refused.
std::optional<CalendarTime> FileTimeToCalendar(std::uint64_t fileTime);
/// Milliseconds are kept. Years 1601-30827.
std::optional<std::uint64_t> CalendarToFileTime(const CalendarTime& time);

/// OLE dates are days since 1899-12-30, whose fraction counts forward from midnight
/// also in a negative date. Years 100-9999, whole seconds: milliseconds are
/// dropped on the way there, and seconds rounded on the way back.
std::optional<double> CalendarToOleDate(const CalendarTime& time);
std::optional<CalendarTime> OleDateToCalendar(double date);

/// Holds a CIM date-time as the system's own reader understands it.
struct CimDate {
    enum class State {
        Refused,    // no reader, or the text is no CIM date-time
        Undefined,  // an interval, or a date of wildcards
        Known,
    };
    State state = State::Refused;
    double utcOleDate = 0;
};
/// COM must be initialised on the calling thread.
CimDate ReadCimDateTime(const std::wstring& text);

}  // namespace quillon::platform
