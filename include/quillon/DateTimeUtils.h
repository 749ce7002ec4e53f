#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include "quillon/Export.h"
#include "quillon/TimePoint.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Converts between the forms of time that meet in the agent.
///
/// "Epoch seconds" count from 1970-01-01T00:00:00 UTC. A TimePoint counts 100-nanosecond ticks
/// from the same moment, a file time such ticks from 1601, an OLE date days from 1899-12-30. A
/// JSON date-time is "%Y-%m-%dT%H:%M:%S.000" followed by a zone: "Z", or a sign and hh:mm; the
/// milliseconds that are written are always 000. Years are those of the Gregorian calendar also
/// before its introduction; leap seconds do not exist.
///
/// Text that cannot be read gives the neutral value that is said below, without a log entry;
/// nothing throws. Every operation is thread-safe.
///
/// @code
/// const TimePoint time = DateTimeUtils::JsonDateTimeToTimePoint("2016-05-10T12:00:00.250+01:00");
/// std::cout << DateTimeUtils::FormatTimeAsISO8601(time) << '\n';         // 2016-05-10T11:00:00.250Z
/// std::cout << DateTimeUtils::FormatTimeSpanAsString(90'061LL) << '\n';  // 1d 1h 1m 1s
/// std::cout << DateTimeUtils::MapWindowsTimezoneToIana("Pacific Standard Time") << '\n';
/// @endcode
class QUILLON_API DateTimeUtils {
public:
    DateTimeUtils() = delete;

    /// Holds "1970-01-01T00:00:00.000Z".
    static const char* const JsonDateTimeEpoch;

    /// Returns the system clock's epoch seconds, rounded down.
    static long long GetUtcTimeNow();
    /// Reads the fields as UTC, whatever tm_isdst says, and normalises them in place, as
    /// timegm() does: fields beyond their range count on, so that day 32 of January is the 1st
    /// of February. It never fails. The pointer must not be null.
    static long long UtcTmToEpochTime(std::tm& utc);
    static long long UtcTmToEpochTime(std::tm* utc);
    /// Fills all fields of `utc`; tm_isdst becomes 0. Seconds whose year has no room in a `tm`
    /// become the nearest that have.
    static void EpochTimeToUtcTm(std::tm& utc, long long epochSeconds);

    /// Returns the epoch seconds of a UTC file time, its fraction of a second dropped; negative
    /// before 1970.
    static long long FileTimeToEpochTime(const windows::FILETIME& fileTime);
    /// Returns the time point; ticks below a millisecond are dropped. A file time that is later
    /// than the last time point becomes it.
    static TimePoint FileTimeToTimePoint(const windows::FILETIME& fileTime);
    /// Returns the time point of an OLE date in UTC, rounded to whole seconds; the epoch for a
    /// date outside the years 1601 to 9999, which cannot be converted.
    static TimePoint DATEToTimePoint(const double& date);
    /// Reads a wall-clock time of the machine's zone with daylight saving time off: a time in
    /// summer is taken as standard time. Months count from 1, and fields beyond their range
    /// count on. Returns the epoch when the system or a time point has no room for it.
    static TimePoint YMDHMSToTimePoint(int year, int month, int day, int hour, int minute, int second);
    /// Returns 00:00 UTC of the same day. The form for time points rounds toward 1970, so a
    /// time before it becomes the following midnight.
    static long long RoundDownToMidnight(long long epochSeconds);
    static TimePoint RoundDownToMidnight(TimePoint time);

    /// Returns "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ" of fields that are taken as they are, cut
    /// at 24 characters (only years past 9999 or wild fields are longer).
    static std::string FormatTimeAsISO8601(const std::tm& utc, unsigned int milliseconds);
    /// Returns the same of a time point in UTC; milliseconds are rounded down, also before
    /// 1970. TimePoint::min(), which stands for no time, gives the empty text.
    static std::string FormatTimeAsISO8601(const TimePoint& time);
    /// Returns the same of epoch seconds, with milliseconds of 000.
    static std::string FormatTimeAsISO8601(const long long& epochSeconds);
    /// Returns the same of a UTC file time, never cut; the empty text for file times of 2^63
    /// and more, which the system refuses.
    static std::string FormatTimeAsISO8601(const windows::FILETIME& fileTime);
    /// Returns local time as "%a %b %d %H : %M:%S %Y", blanks around the first colon; the empty
    /// text when it would be longer than 26 characters (from year 10000) or the system cannot
    /// tell the local time.
    static std::string FormatTimeTAsAscTime(long long epochSeconds);
    /// Returns "1d 2h 3m 4s", leading zero parts left out; zero and less give "0s".
    static std::string FormatTimeSpanAsString(const long long& seconds);

    /// Reads UTCTime (12 digits; years below 50 are 20yy) or GeneralizedTime (14 digits); text
    /// from the first '+', '-' or 'Z' on is ignored, so the time is always taken as UTC (RFC
    /// 5280, 4.1.2.5). On failure, and for a null text, returns false and sets 0;
    /// `epochSeconds` must not be null.
    static bool ParseX509TimeString(const char* text, long long* epochSeconds);
    /// Returns the epoch seconds, 0 on failure. The zone is applied, and a text without one is
    /// UTC. The digits after the point are read as a number of milliseconds (".5" is 5); 500
    /// and more add one second.
    static long long JsonDateTimeToEpochTime(const std::string& text);
    /// Returns the same moment with its milliseconds; the epoch on failure, and for a date that
    /// a time point has no room for.
    static TimePoint JsonDateTimeToTimePoint(const std::string& text);
    /// Reads a date-time strictly, as RFC 3339, section 5.6, has it: "2016-05-10T12:00:00.25+01:00", with 'T'
    /// and 'Z' in either case, a fraction of any length (digits past the seventh are dropped), second 60
    /// counting on, and a zone of at most 14 hours either way. Returns nothing for any other text, and for a
    /// date that a time point has no room for.
    [[nodiscard]] static std::optional<TimePoint> TryParseJsonDateTime(std::string_view text);

    /// Writes the date's own fields with the zone offset that is in force now, not at that
    /// date; "Z" when the system does not tell its zone, "+00:00" for UTC. Returns the empty
    /// text for an invalid date and for the years 1601 and 1899, which stand for no date.
    static std::string ColeDateTimeToJsonDateTime(const OleDateTime& date);
    /// Returns a moment in UTC in local time, with the offset that is in force now; the empty
    /// text for a failure and for the years above.
    static std::string FileTimeToJsonDateTime(const windows::FILETIME& utc);
    static std::string DATEToJsonDateTime(const double& utc);
    /// Returns DATEToJsonDateTime() of the VARIANT's `date` member; its type is not checked.
    static std::string VT_DATEToJsonDateTime(const windows::VARIANT& value);
    /// Rewrites a CIM DATETIME of 25 characters (DMTF DSP0004) with its own zone ("Z" for UTC)
    /// and its first three digits of a second. A field that begins with '*' is taken from the
    /// current local time (year, month, day) or 0. Anything that is no text of that length
    /// gives the empty text.
    static std::wstring CimDateTimeToJsonDateTime(const windows::_variant_t& value);
    /// Returns the date as VT_DATE in UTC; VT_NULL when the text has no date (an interval, a
    /// date of wildcards), VT_EMPTY when the text is refused or the system's reader cannot be
    /// made. COM must be initialised on the calling thread; the caller has nothing to free.
    static windows::VARIANT CimDateTimeToVariantDate(const windows::_bstr_t& text);

    /// Returns the IANA zone of a Windows zone identifier (exact, case-sensitive), from the
    /// embedded windowsZones document of the Unicode CLDR. An unknown name gives the empty text
    /// and the Warn entry "TimeZoneMapper does not contain the string 'X'". The first call
    /// reads the document, one caller at a time; what is wrong with it is logged once.
    static std::string MapWindowsTimezoneToIana(const std::string& name);
    /// Returns the first of the zone's IANA zones in a territory (ISO 3166-1 in capitals, such as "PL" with
    /// "Central European Standard Time" for "Europe/Warsaw"), and without one there the zone's usual one.
    static std::string MapWindowsTimezoneToIana(const std::string& name, const std::string& territory);
    /// Returns the Windows zone identifier of an IANA zone of any territory (exact, case-sensitive). Names of
    /// today are known where the document has former ones, as "Asia/Calcutta" for "Asia/Kolkata". An unknown
    /// name gives the empty text and the same entry.
    static std::string MapIanaTimezoneToWindows(const std::string& name);
    /// Reads a windowsZones document, of a newer release of the CLDR for instance, at most 4 MiB large. From
    /// now on its entries count before the embedded ones; one that was read before is dropped. Returns false,
    /// with an Error entry, and changes nothing, when the file cannot be read, the reason being in the last
    /// error then, or is no such document.
    [[nodiscard]] static bool OverrideTimezones(const std::string& path);

private:
    static void FixupCimDateTimeWildcard(std::wstring& text, std::size_t position, std::size_t length,
                                         int value);
};

}  // namespace quillon
