#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "Utils/internal/DateTimeParts.h"
#include "base/CivilTime.h"
#include "platform/TimeApi.h"
#include "platform/ole/OleTypes.h"
#include "quillon/DateTimeUtils.h"

namespace quillon {
namespace {

constexpr std::size_t kIsoLength = 24;

/// "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", cut at `limit`.
std::string IsoText(const UtcFields& fields, int milliseconds, std::size_t limit) {
    std::array<char, kDateTimeSize + 22> buffer;
    char* end = WriteDateTime(buffer.data(), fields);
    *end++ = '.';
    end = WritePadded(end, milliseconds, 3);
    *end++ = 'Z';
    return std::string(buffer.data(), std::min(static_cast<std::size_t>(end - buffer.data()), limit));
}

/// WritePadded(out, value, 2); nearly every field has two digits.
char* WriteTwo(char* out, std::int64_t value) {
    if (value < 0 || value > 99) return WritePadded(out, value, 2);
    out[0] = static_cast<char>('0' + value / 10);
    out[1] = static_cast<char>('0' + value % 10);
    return out + 2;
}

/// Appends one part of a time span, unless it is a zero that nothing precedes.
void AppendSpanPart(std::string& text, long long value, const char* unit) {
    if (value == 0 && text.empty()) return;
    text += std::to_string(value);
    text += unit;
}

}  // namespace

char* WritePadded(char* out, std::int64_t value, int width) {
    std::array<char, 20> digits;
    const bool isNegative = value < 0;
    const auto magnitude =
        isNegative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), magnitude).ptr;
    if (isNegative) *out++ = '-';
    for (auto length = (end - digits.data()) + isNegative; length < width; ++length) *out++ = '0';
    return std::copy(static_cast<const char*>(digits.data()), end, out);
}

char* WriteDateTime(char* out, const UtcFields& fields) {
    out = WritePadded(out, fields.year, 4);
    *out++ = '-';
    out = WriteTwo(out, fields.month);
    *out++ = '-';
    out = WriteTwo(out, fields.day);
    *out++ = 'T';
    out = WriteTwo(out, fields.hour);
    *out++ = ':';
    out = WriteTwo(out, fields.minute);
    *out++ = ':';
    return WriteTwo(out, fields.second);
}

std::string ZoneDesignator(int offsetMinutes) {
    const int minutes = std::abs(offsetMinutes);
    std::array<char, 48> buffer;
    char* end = buffer.data();
    *end++ = offsetMinutes < 0 ? '-' : '+';
    end = WriteTwo(end, minutes / 60);
    *end++ = ':';
    end = WriteTwo(end, minutes % 60);
    return std::string(buffer.data(), end);
}

std::string DateTimeUtils::FormatTimeAsISO8601(const std::tm& utc, unsigned int milliseconds) {
    const UtcFields fields{std::int64_t{utc.tm_year} + 1900,
                           std::int64_t{utc.tm_mon} + 1,
                           utc.tm_mday,
                           utc.tm_hour,
                           utc.tm_min,
                           utc.tm_sec};
    return IsoText(fields, static_cast<int>(milliseconds), kIsoLength);
}

std::string DateTimeUtils::FormatTimeAsISO8601(const TimePoint& time) {
    if (time == TimePoint::min()) return {};
    // Rounded down, so that a time before 1970 is the one that its milliseconds follow.
    const std::int64_t ticks = time.time_since_epoch().count();
    const auto ticksOfSecond = static_cast<int>(base::FloorRemainder(ticks, base::kTicksPerSecond));
    return IsoText(EpochToUtcFields(base::FloorDivide(ticks, base::kTicksPerSecond)), ticksOfSecond / 10'000,
                   kIsoLength);
}

std::string DateTimeUtils::FormatTimeAsISO8601(const long long& epochSeconds) {
    return IsoText(EpochToUtcFields(epochSeconds), 0, kIsoLength);
}

std::string DateTimeUtils::FormatTimeAsISO8601(const FILETIME& fileTime) {
    const auto time = platform::FileTimeToCalendar(FileTimeTicks(fileTime));
    if (!time) return {};
    return IsoText({time->year, time->month, time->day, time->hour, time->minute, time->second},
                   time->millisecond, std::string::npos);
}

std::string DateTimeUtils::FormatTimeTAsAscTime(long long epochSeconds) {
    const auto local = platform::LocalFields(epochSeconds);
    if (!local) return {};
    // Not strftime: the names are those of the C locale, whichever locale the host has set.
    constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::array<char, 26 + 1> buffer;
    const int length = std::snprintf(buffer.data(), buffer.size(), "%s %s %02d %02d : %02d:%02d %lld",
                                     kDays[local->tm_wday], kMonths[local->tm_mon], local->tm_mday,
                                     local->tm_hour, local->tm_min, local->tm_sec, local->tm_year + 1900LL);
    const bool fits = length > 0 && static_cast<std::size_t>(length) < buffer.size();
    return fits ? std::string(buffer.data(), static_cast<std::size_t>(length)) : std::string();
}

std::string DateTimeUtils::FormatTimeSpanAsString(const long long& seconds) {
    if (seconds <= 0) return "0s";
    const long long minutes = seconds / 60;
    const long long hours = minutes / 60;
    const long long days = hours / 24;
    std::string text;
    AppendSpanPart(text, days, "d ");
    AppendSpanPart(text, hours - 24 * days, "h ");
    AppendSpanPart(text, minutes - 60 * hours, "m ");
    AppendSpanPart(text, seconds - 60 * minutes, "s");
    return text;
}

}  // namespace quillon
