#include <array>
#include <ctime>
#include <optional>
#include <string_view>

#include "Utils/internal/DateTimeParts.h"
#include "base/CivilTime.h"
#include "base/NumberText.h"
#include "base/Utf.h"
#include "platform/TextApi.h"
#include "platform/TimeApi.h"
#include "platform/ole/OleTypes.h"
#include "quillon/DateTimeUtils.h"

namespace quillon {

using platform::CalendarTime;
using platform::CimDate;

namespace {

constexpr std::size_t kCimLength = 25;

FILETIME ToFileTime(std::uint64_t ticks) {
    return {static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
}

/// The OLE date as a UTC file time.
std::optional<std::uint64_t> OleDateToFileTime(double date) {
    const auto time = platform::OleDateToCalendar(date);
    return time ? platform::CalendarToFileTime(*time) : std::nullopt;
}

/// Converts to an OLE date; nothing when converting back gives another time.
std::optional<double> ToOleDate(const CalendarTime& time) {
    const auto date = platform::CalendarToOleDate(time);
    const auto back = date ? platform::OleDateToCalendar(*date) : std::nullopt;
    if (!back || back->year != time.year || back->month != time.month || back->day != time.day ||
        back->hour != time.hour || back->minute != time.minute || back->second != time.second) {
        return std::nullopt;
    }
    return date;
}

/// Nothing past the range of file times, 2^63 - 1 ticks.
std::optional<std::uint64_t> ShiftTicks(std::uint64_t ticks, int minutes) {
    constexpr auto kEnd = std::uint64_t{1} << 63;
    const std::int64_t shift = minutes * std::int64_t{60} * base::kTicksPerSecond;
    const std::uint64_t shifted = ticks + static_cast<std::uint64_t>(shift);  // wraps below 0
    return ticks < kEnd && shifted < kEnd ? std::optional(shifted) : std::nullopt;
}

/// The zone's offset in minutes; nothing is written as "Z".
std::string JsonDateTime(double date, const std::optional<int>& offset) {
    const auto time = platform::OleDateToCalendar(date);
    if (!time || time->year == 1601 || time->year == 1899) return {};
    std::array<char, kDateTimeSize> buffer;
    std::string text(buffer.data(), WriteDateTime(buffer.data(), {time->year, time->month, time->day,
                                                                  time->hour, time->minute, time->second}));
    return text + ".000" + (offset ? ZoneDesignator(*offset) : "Z");
}

/// The zone is read once: it may change between two readings, and the text would be another time.
std::string TicksToJsonDateTime(std::uint64_t utcTicks) {
    const auto offset = platform::ZoneOffsetNow();
    const auto localTicks = offset ? ShiftTicks(utcTicks, *offset) : std::nullopt;
    const auto local = localTicks ? platform::FileTimeToCalendar(*localTicks) : std::nullopt;
    const auto date = local ? ToOleDate(*local) : std::nullopt;
    return date ? JsonDateTime(*date, offset) : std::string();
}

/// "Z" for an offset of 0.
std::wstring CimZone(const std::wstring& text) {
    const int offset = base::ReadSigned<int>(base::ToUtf8(std::wstring_view(text).substr(21)));
    if (offset == 0) return L"Z";
    const std::string zone = ZoneDesignator(offset);
    return std::wstring(zone.begin(), zone.end());
}

std::tm LocalNow() {
    const long long now = DateTimeUtils::GetUtcTimeNow();
    if (const auto local = platform::LocalFields(now)) return *local;
    std::tm utc{};
    DateTimeUtils::EpochTimeToUtcTm(utc, now);
    return utc;
}

}  // namespace

TimePoint DateTimeUtils::DATEToTimePoint(const double& date) {
    const auto ticks = OleDateToFileTime(date);
    return ticks ? FileTimeToTimePoint(ToFileTime(*ticks)) : TimePoint();
}

std::string DateTimeUtils::ColeDateTimeToJsonDateTime(const OleDateTime& date) {
    return date.GetStatus() == OleDateTime::valid ? JsonDateTime(date.m_dt, platform::ZoneOffsetNow())
                                                  : std::string();
}

std::string DateTimeUtils::FileTimeToJsonDateTime(const FILETIME& utc) {
    return TicksToJsonDateTime(FileTimeTicks(utc));
}

std::string DateTimeUtils::DATEToJsonDateTime(const double& utc) {
    const auto ticks = OleDateToFileTime(utc);
    return ticks ? TicksToJsonDateTime(*ticks) : std::string();
}

std::string DateTimeUtils::VT_DATEToJsonDateTime(const VARIANT& value) {
    return DATEToJsonDateTime(value.date);
}

std::wstring DateTimeUtils::CimDateTimeToJsonDateTime(const _variant_t& value) {
    std::wstring text(value.vt == VT_BSTR ? platform::BstrText(value.bstrVal) : std::wstring_view());
    if (text.size() != kCimLength) return {};
    const std::wstring zone = CimZone(text);
    const std::tm now = LocalNow();
    FixupCimDateTimeWildcard(text, 0, 4, now.tm_year + 1900);
    FixupCimDateTimeWildcard(text, 4, 2, now.tm_mon + 1);
    FixupCimDateTimeWildcard(text, 6, 2, now.tm_mday);
    FixupCimDateTimeWildcard(text, 8, 2, 0);
    FixupCimDateTimeWildcard(text, 10, 2, 0);
    FixupCimDateTimeWildcard(text, 12, 2, 0);
    FixupCimDateTimeWildcard(text, 15, 3, 0);
    return text.substr(0, 4) + L'-' + text.substr(4, 2) + L'-' + text.substr(6, 2) + L'T' +
           text.substr(8, 2) + L':' + text.substr(10, 2) + L':' + text.substr(12, 2) + L'.' +
           text.substr(15, 3) + zone;
}

void DateTimeUtils::FixupCimDateTimeWildcard(std::wstring& text, std::size_t position, std::size_t length,
                                             int value) {
    if (text[position] != L'*') return;
    const std::wstring digits = std::to_wstring(value);
    text.replace(position, length, length, L'0');
    if (digits.size() <= length) text.replace(position + length - digits.size(), digits.size(), digits);
}

VARIANT DateTimeUtils::CimDateTimeToVariantDate(const _bstr_t& text) {
    const wchar_t* const characters = text;
    const CimDate date = platform::ReadCimDateTime(
        characters == nullptr ? std::wstring() : std::wstring(characters, text.length()));
    VARIANT result{};
    if (date.state == CimDate::State::Refused) return result;
    result.vt = date.state == CimDate::State::Known ? VT_DATE : VT_NULL;
    result.date = date.utcOleDate;
    return result;
}

}  // namespace quillon
