#pragma once

#include <ctime>
#include <string>

#include "quillon/Export.h"
#include "quillon/TimePoint.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Conversions between the time forms that meet in the agent. "Epoch seconds"
/// count from 1970-01-01T00:00:00 UTC. A file time counts 100-nanosecond ticks
/// from 1601, an OLE date days from 1899-12-30. A JSON date-time is
/// "%Y-%m-%dT%H:%M:%S.000" and a zone: Z, or a sign and hh:mm. Text that cannot be
/// read gives a neutral value and no log entry. Any thread.
class QUILLON_API DateTimeUtils {
public:
    DateTimeUtils() = delete;

    static const char* const JsonDateTimeEpoch;

    static long long GetUtcTimeNow();
    /// Reads the fields as UTC and normalises them in place. Never fails: fields
    /// beyond their range count on.
    static long long UtcTmToEpochTime(std::tm& utc);
    static long long UtcTmToEpochTime(std::tm* utc);
    /// Seconds whose year has no room in `utc` become the nearest that has.
    static void EpochTimeToUtcTm(std::tm& utc, long long epochSeconds);

    static long long FileTimeToEpochTime(const FILETIME& fileTime);
    /// Ticks below a millisecond are dropped; what is later than the last time point becomes it.
    static TimePoint FileTimeToTimePoint(const FILETIME& fileTime);
    /// `date` is UTC; whole seconds. A date that cannot be converted gives the epoch.
    static TimePoint DATEToTimePoint(const double& date);
    /// A local wall-clock time, read with daylight saving time off; the epoch when
    /// the system or a time point has no room for it.
    static TimePoint YMDHMSToTimePoint(int year, int month, int day, int hour, int minute, int second);
    static long long RoundDownToMidnight(long long epochSeconds);
    static TimePoint RoundDownToMidnight(TimePoint time);

    /// "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", cut at 24 characters.
    static std::string FormatTimeAsISO8601(const std::tm& utc, unsigned int milliseconds);
    /// Milliseconds are rounded down, also before 1970. The smallest time point gives
    /// the empty text.
    static std::string FormatTimeAsISO8601(const TimePoint& time);
    static std::string FormatTimeAsISO8601(const long long& epochSeconds);
    /// Empty for file times of 2^63 and more.
    static std::string FormatTimeAsISO8601(const FILETIME& fileTime);
    /// Local time as "%a %b %d %H : %M:%S %Y"; empty past 26 characters (year 10000).
    static std::string FormatTimeTAsAscTime(long long epochSeconds);
    /// "1d 2h 3m 4s"; zero and below give "0s".
    static std::string FormatTimeSpanAsString(const long long& seconds);

    /// UTCTime (12 characters) or GeneralizedTime (14), the zone being ignored
    /// (RFC 5280, 4.1.2.5). On failure false and 0.
    static bool ParseX509TimeString(const char* text, long long* epochSeconds);
    /// 0 on failure. Milliseconds of 500 and more round up.
    static long long JsonDateTimeToEpochTime(const std::string& text);
    /// The epoch on failure, and for a date that a time point has no room for.
    static TimePoint JsonDateTimeToTimePoint(const std::string& text);

    /// The date's own fields with the zone that is in force now; empty for an
    /// invalid date and for the years 1601 and 1899, which stand for no date.
    static std::string ColeDateTimeToJsonDateTime(const ATL::COleDateTime& date);
    /// In local time. Empty on failure.
    static std::string FileTimeToJsonDateTime(const FILETIME& utc);
    static std::string DATEToJsonDateTime(const double& utc);
    static std::string VT_DATEToJsonDateTime(const VARIANT& value);
    /// From a CIM DATETIME of 25 characters (DMTF DSP0004), wildcards taken from
    /// the current local time. Anything else gives the empty text.
    static std::wstring CimDateTimeToJsonDateTime(const _variant_t& value);
    /// VT_DATE in UTC; VT_NULL when the date cannot be had; VT_EMPTY when the text
    /// is refused. COM must be initialised on the calling thread.
    static VARIANT CimDateTimeToVariantDate(const _bstr_t& text);

    /// The IANA zone of a Windows zone identifier (exact, case-sensitive), from the
    /// Unicode CLDR's windowsZones. Unknown: the empty text and a Warn entry.
    static std::string MapWindowsTimezoneToIana(const std::string& name);

private:
    static void FixupCimDateTimeWildcard(std::wstring& text, std::size_t position, std::size_t length,
                                         int value);
};

}  // namespace quillon
