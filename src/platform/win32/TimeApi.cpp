#include "platform/TimeApi.h"

#include <cmath>

#include "platform/Handle.h"
#include "platform/ole/OleTypes.h"
// After <windows.h>:
#include <wbemdisp.h>

namespace quillon::platform {

namespace {

FILETIME ToFileTime(std::uint64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::uint64_t Ticks(const FILETIME& time) {
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

SYSTEMTIME ToSystemTime(const CalendarTime& time) {
    SYSTEMTIME result{};
    result.wYear = static_cast<WORD>(time.year);
    result.wMonth = static_cast<WORD>(time.month);
    result.wDay = static_cast<WORD>(time.day);
    result.wHour = static_cast<WORD>(time.hour);
    result.wMinute = static_cast<WORD>(time.minute);
    result.wSecond = static_cast<WORD>(time.second);
    result.wMilliseconds = static_cast<WORD>(time.millisecond);
    return result;
}

CalendarTime ToCalendar(const SYSTEMTIME& time) {
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds};
}

struct InterfaceTraits {
    using Type = IUnknown*;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept { value->Release(); }
};

}  // namespace

std::optional<std::tm> LocalFields(std::int64_t epochSeconds) {
    const __time64_t time = epochSeconds;
    std::tm fields{};
    ::_tzset();  // the runtime alone would stay with the zone that it found first
    if (::_localtime64_s(&fields, &time) != 0) return std::nullopt;
    return fields;
}

std::optional<std::int64_t> EpochOfLocalFields(std::tm local) {
    local.tm_isdst = 0;
    local.tm_wday = -1;  // tells a failure from the second before 1970
    ::_tzset();
    const __time64_t time = ::_mktime64(&local);
    if (time == -1 && local.tm_wday == -1) return std::nullopt;
    return time;
}

std::optional<int> ZoneOffsetNow() {
    TIME_ZONE_INFORMATION zone{};
    const DWORD inForce = ::GetTimeZoneInformation(&zone);
    if (inForce == TIME_ZONE_ID_INVALID) return std::nullopt;
    return -(zone.Bias + (inForce == TIME_ZONE_ID_DAYLIGHT ? zone.DaylightBias : zone.StandardBias));
}

std::optional<CalendarTime> FileTimeToCalendar(std::uint64_t fileTime) {
    const FILETIME ticks = ToFileTime(fileTime);
    SYSTEMTIME fields{};
    if (!::FileTimeToSystemTime(&ticks, &fields)) return std::nullopt;
    return ToCalendar(fields);
}

std::optional<std::uint64_t> CalendarToFileTime(const CalendarTime& time) {
    const SYSTEMTIME fields = ToSystemTime(time);
    FILETIME ticks{};
    if (!::SystemTimeToFileTime(&fields, &ticks)) return std::nullopt;
    return Ticks(ticks);
}

std::optional<double> CalendarToOleDate(const CalendarTime& time) {
    SYSTEMTIME fields = ToSystemTime(time);
    double date = 0;
    if (!::SystemTimeToVariantTime(&fields, &date)) return std::nullopt;
    return date;
}

std::optional<CalendarTime> OleDateToCalendar(double date) {
    SYSTEMTIME fields{};
    if (std::isnan(date)) return std::nullopt;  // not every version's range check stops it
    if (!::VariantTimeToSystemTime(date, &fields)) return std::nullopt;
    return ToCalendar(fields);
}

CimDate ReadCimDateTime(const std::wstring& text) {
    ISWbemDateTime* reader = nullptr;
    if (FAILED(::CoCreateInstance(__uuidof(SWbemDateTime), nullptr, CLSCTX_INPROC_SERVER,
                                  __uuidof(ISWbemDateTime), reinterpret_cast<void**>(&reader)))) {
        return {};
    }
    const Handle<InterfaceTraits> owner(reader);
    if (FAILED(reader->put_Value(_bstr_t(text.c_str())))) return {};
    CimDate result{CimDate::State::Known, 0};
    if (FAILED(reader->GetVarDate(VARIANT_FALSE, &result.utcOleDate)))
        result.state = CimDate::State::Undefined;
    return result;
}

}  // namespace quillon::platform
