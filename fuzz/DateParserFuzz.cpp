#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "quillon/DateTimeUtils.h"

// One byte chooses the reader, the rest is its text. JSON texts are compared with
// the C library where its result is defined.

namespace {

using quillon::DateTimeUtils;

/// sscanf leaves numbers past the range of an int undefined.
bool HasLongNumber(const std::string& text) {
    std::size_t digits = 0;
    for (const char character : text) {
        digits = character >= '0' && character <= '9' ? digits + 1 : 0;
        if (digits > 8) return true;
    }
    return false;
}

/// The offset as sscanf reads it, but for the sign of a zero hour.
long long ZoneByLibc(const std::string& text) {
    if (text.back() == 'Z' || text.back() == 'z') return 0;
    const std::size_t sign = text.find_last_of("+-");
    int hours = 0;
    int minutes = 0;
    if (sign == std::string::npos || std::sscanf(text.c_str() + sign, "%d:%d", &hours, &minutes) != 2)
        return 0;
    const long long magnitude = std::llabs(hours) * 60 + minutes;
    return text[sign] == '-' ? -magnitude : magnitude;
}

long long JsonByLibc(const std::string& text) {
    std::tm utc{};
    if (text.size() < 19 || std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d", &utc.tm_year, &utc.tm_mon,
                                        &utc.tm_mday, &utc.tm_hour, &utc.tm_min, &utc.tm_sec) != 6) {
        return 0;
    }
    utc.tm_year -= 1900;
    utc.tm_mon -= 1;
    const std::size_t point = text.find('.');
    const char* const fraction = point == std::string::npos ? "" : text.c_str() + point + 1;
    const bool roundsUp = *fraction >= '0' && *fraction <= '9' && std::atoi(fraction) >= 500;
    return ::timegm(&utc) - ZoneByLibc(text) * 60 + (roundsUp ? 1 : 0);
}

void CheckJson(const std::string& text) {
    const long long seconds = DateTimeUtils::JsonDateTimeToEpochTime(text);
    DateTimeUtils::JsonDateTimeToTimePoint(text);
    if (text.size() < 64 && !HasLongNumber(text) && seconds != JsonByLibc(text)) std::abort();
}

void CheckX509(const std::string& text) {
    long long seconds = -1;
    const bool isRead = DateTimeUtils::ParseX509TimeString(text.c_str(), &seconds);
    if (!isRead && seconds != 0) std::abort();
    if (isRead && DateTimeUtils::FormatTimeAsISO8601(seconds).size() != 24) std::abort();
}

void CheckCim(const std::string& text) {
    std::wstring wide;  // one unit a byte, and what a byte alone cannot hold
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        wide += static_cast<wchar_t>(byte < 0x80 ? byte : byte << 8);
    }
    const _variant_t value(wide.c_str());
    const std::wstring json = DateTimeUtils::CimDateTimeToJsonDateTime(value);
    if (json.empty() != (std::wcslen(wide.c_str()) != 25)) std::abort();
    const VARIANT date = DateTimeUtils::CimDateTimeToVariantDate(_bstr_t(wide.c_str()));
    if (date.vt == VT_DATE && DateTimeUtils::VT_DATEToJsonDateTime(date).size() != 29 && date.date > 2)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] % 3 == 0) CheckJson(text);
    if (data[0] % 3 == 1) CheckX509(text);
    if (data[0] % 3 == 2) CheckCim(text);
    return 0;
}
