#include "platform/TimeApi.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <limits>

#include "base/CivilTime.h"

namespace quillon::platform {

using base::kSecondsPerDay;
using base::kTicksPerSecond;

namespace {

constexpr std::int64_t kDaysOf1601 = base::DaysFromCivil(1601, 1, 1);
constexpr std::int64_t kDaysOf1899 = base::DaysFromCivil(1899, 12, 30);  // where OLE dates begin
constexpr double kFirstOleDate = -657'434;                               // 0100-01-01
constexpr double kEndOfOleDates = 2'958'466;                             // 10000-01-01
constexpr auto kEndOfFileTimes = std::uint64_t{1} << 63;

bool IsCalendarTime(const CalendarTime& time, int firstYear, int lastYear) {
    return time.year >= firstYear && time.year <= lastYear && time.month >= 1 && time.month <= 12 &&
           time.day >= 1 && time.hour >= 0 && time.hour < 24 && time.minute >= 0 && time.minute < 60 &&
           time.second >= 0 && time.second < 60 && time.millisecond >= 0 && time.millisecond < 1000 &&
           base::CivilFromDays(base::DaysFromCivil(time.year, time.month, time.day)).day == time.day;
}

int SecondOfDay(const CalendarTime& time) { return (time.hour * 60 + time.minute) * 60 + time.second; }

CalendarTime ToCalendar(std::int64_t days, std::int64_t secondOfDay, int millisecond) {
    const base::CivilDate date = base::CivilFromDays(days);
    const auto second = static_cast<int>(secondOfDay);
    return {static_cast<int>(date.year),
            date.month,
            date.day,
            second / 3600,
            second / 60 % 60,
            second % 60,
            millisecond};
}

// --- CIM date-times: yyyymmddHHMMSS.mmmmmmsUUU, or ddddddddHHMMSS.mmmmmm:000 ---

/// A field's value; -1 for one of wildcards; nothing for anything else.
std::optional<int> CimField(const std::wstring& text, std::size_t position, std::size_t length) {
    const auto field = text.substr(position, length);
    if (field.find_first_not_of(L'*') == std::wstring::npos) return -1;
    if (field.find_first_not_of(L"0123456789") != std::wstring::npos) return std::nullopt;
    return static_cast<int>(std::wcstol(field.c_str(), nullptr, 10));
}

bool IsCimShape(const std::wstring& text) {
    return text.size() == 25 && text[14] == L'.' &&
           (text[21] == L'+' || text[21] == L'-' || text[21] == L':') && CimField(text, 15, 6) &&
           CimField(text, 22, 3);
}

}  // namespace

std::optional<std::tm> LocalFields(std::int64_t epochSeconds) {
    const std::time_t time = epochSeconds;
    std::tm fields{};
    ::tzset();  // localtime_r alone would never notice that the machine's zone has changed
    if (::localtime_r(&time, &fields) == nullptr) return std::nullopt;
    return fields;
}

std::optional<std::int64_t> EpochOfLocalFields(std::tm local) {
    local.tm_isdst = 0;
    local.tm_wday = -1;  // tells a failure from the second before 1970
    const std::time_t time = std::mktime(&local);
    if (time == -1 && local.tm_wday == -1) return std::nullopt;
    return time;
}

std::optional<int> ZoneOffsetNow() {
    const auto now = LocalFields(std::time(nullptr));
    if (!now) return std::nullopt;
    return static_cast<int>(now->tm_gmtoff / 60);
}

std::optional<CalendarTime> FileTimeToCalendar(std::uint64_t fileTime) {
    if (fileTime >= kEndOfFileTimes) return std::nullopt;
    const auto ticks = static_cast<std::int64_t>(fileTime);
    const std::int64_t seconds = ticks / kTicksPerSecond;
    return ToCalendar(seconds / kSecondsPerDay + kDaysOf1601, seconds % kSecondsPerDay,
                      static_cast<int>(ticks % kTicksPerSecond / 10'000));
}

std::optional<std::uint64_t> CalendarToFileTime(const CalendarTime& time) {
    if (!IsCalendarTime(time, 1601, 30'827)) return std::nullopt;
    const std::int64_t days = base::DaysFromCivil(time.year, time.month, time.day) - kDaysOf1601;
    const std::int64_t milliseconds = (days * kSecondsPerDay + SecondOfDay(time)) * 1000 + time.millisecond;
    return static_cast<std::uint64_t>(milliseconds * 10'000);
}

std::optional<double> CalendarToOleDate(const CalendarTime& time) {
    if (!IsCalendarTime(time, 100, 9999)) return std::nullopt;
    const auto days = static_cast<double>(base::DaysFromCivil(time.year, time.month, time.day) - kDaysOf1899);
    const double fraction = SecondOfDay(time) / static_cast<double>(kSecondsPerDay);
    return days < 0 ? days - fraction : days + fraction;
}

std::optional<CalendarTime> OleDateToCalendar(double date) {
    // A date of the first day may lie up to a day below its whole number.
    if (!(date > kFirstOleDate - 1 && date < kEndOfOleDates)) return std::nullopt;
    const double whole = std::trunc(date);
    auto second = static_cast<std::int64_t>(std::lround(std::abs(date - whole) * kSecondsPerDay));
    auto day = static_cast<std::int64_t>(whole);
    if (second == kSecondsPerDay) {
        ++day;
        second = 0;
    }
    if (static_cast<double>(day) >= kEndOfOleDates) return std::nullopt;
    return ToCalendar(day + kDaysOf1899, second, 0);
}

CimDate ReadCimDateTime(const std::wstring& text) {
    if (!IsCimShape(text)) return {};
    const bool isInterval = text[21] == L':';
    const auto year = CimField(text, 0, 4), month = CimField(text, 4, 2), day = CimField(text, 6, 2);
    const auto hour = CimField(text, 8, 2), minute = CimField(text, 10, 2), second = CimField(text, 12, 2);
    if (!year || !month || !day || !hour || !minute || !second) return {};
    if (isInterval || *year < 0 || *month < 0 || *day < 0) return {CimDate::State::Undefined, 0};

    // A time of day that is left open is midnight.
    const CalendarTime wall{
        *year, *month, *day, std::max(*hour, 0), std::max(*minute, 0), std::max(*second, 0), 0};
    const auto local = CalendarToFileTime(wall);
    if (!local) return {};
    const int offset = std::max(*CimField(text, 22, 3), 0) * (text[21] == L'-' ? -1 : 1);
    const auto utc = static_cast<std::int64_t>(*local) - offset * 60 * kTicksPerSecond;
    const auto fields = utc < 0 ? std::nullopt : FileTimeToCalendar(static_cast<std::uint64_t>(utc));
    const auto date = fields ? CalendarToOleDate(*fields) : std::nullopt;
    return date ? CimDate{CimDate::State::Known, *date} : CimDate{CimDate::State::Undefined, 0};
}

}  // namespace quillon::platform
