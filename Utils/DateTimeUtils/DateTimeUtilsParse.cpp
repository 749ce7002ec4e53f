#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>

#include "Utils/internal/DateTimeParts.h"
#include "base/Characters.h"
#include "base/CivilTime.h"
#include "base/DateTimeText.h"
#include "quillon/DateTimeUtils.h"

namespace quillon {
namespace {

using base::IsDigit;
using base::IsSpace;

constexpr std::int64_t kIntLimit = std::numeric_limits<int>::max();

/// Reads what "%d" and literal characters of a scanf pattern read, and stays on
/// the first character that does not match.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_next(text.data()), m_end(text.data() + text.size()) {}

    bool Literal(char expected) {
        if (m_next == m_end || *m_next != expected) return false;
        ++m_next;
        return true;
    }

    /// White space, a sign and digits. Values past the range of an int become its limit.
    bool Number(std::int64_t& value) {
        while (m_next != m_end && IsSpace(*m_next)) ++m_next;
        const bool isNegative = Literal('-');
        if (!isNegative) Literal('+');
        if (m_next == m_end || !IsDigit(*m_next)) return false;
        value = isNegative ? -Digits(kIntLimit + 1) : Digits(kIntLimit);
        return true;
    }

    /// 0 when there is none; no more than `limit`.
    std::int64_t Digits(std::int64_t limit = kIntLimit) {
        std::int64_t value = 0;
        for (; m_next != m_end && IsDigit(*m_next); ++m_next) {
            value = std::min(value * 10 + (*m_next - '0'), limit);
        }
        return value;
    }

private:
    const char* m_next;
    const char* m_end;
};

struct JsonTime {
    std::int64_t seconds;
    std::int64_t milliseconds;
};

/// "%d-%d-%dT%d:%d:%d"
bool ScanFields(std::string_view text, UtcFields& fields) {
    Scanner scanner(text);
    return scanner.Number(fields.year) && scanner.Literal('-') && scanner.Number(fields.month) &&
           scanner.Literal('-') && scanner.Number(fields.day) && scanner.Literal('T') &&
           scanner.Number(fields.hour) && scanner.Literal(':') && scanner.Number(fields.minute) &&
           scanner.Literal(':') && scanner.Number(fields.second);
}

std::int64_t ReadMilliseconds(std::string_view text) {
    const std::size_t point = text.find('.');
    return point == std::string_view::npos ? 0 : Scanner(text.substr(point + 1)).Digits();
}

/// Minutes east of UTC; 0 without a readable designator.
std::int64_t ReadZoneOffset(std::string_view text) {
    if (text.back() == 'Z' || text.back() == 'z') return 0;
    const std::size_t sign = text.find_last_of("+-");
    if (sign == std::string_view::npos) return 0;
    Scanner scanner(text.substr(sign));
    std::int64_t hours = 0;
    std::int64_t minutes = 0;
    if (!scanner.Number(hours) || !scanner.Literal(':') || !scanner.Number(minutes)) return 0;
    // The sign's own character: "-00:30" is west of Greenwich although its hours are 0.
    return text[sign] == '-' ? hours * 60 - minutes : hours * 60 + minutes;
}

constexpr std::size_t kShortest = std::string_view("1970-01-01T00:00:00").size();

/// Reads "Z" or "+01:00", with any digits, as the whole text; seconds east of UTC.
bool ReadUsualZone(std::string_view text, std::int64_t& offset) {
    if (text == "Z") return true;
    constexpr std::string_view kForm = "+00:00";
    if (text.size() != kForm.size() || (text[0] != '+' && text[0] != '-') || text[3] != ':') return false;
    bool isDigits = true;
    for (const std::size_t i : {1U, 2U, 4U, 5U}) isDigits &= IsDigit(text[i]);
    const int hours = (text[1] - '0') * 10 + (text[2] - '0');
    const int minutes = (text[4] - '0') * 10 + (text[5] - '0');
    offset = (hours * 60 + minutes) * (text[0] == '-' ? -60 : 60);
    return isDigits;
}

/// Reads "1970-01-01T00:00:00.000" and a zone, with any digits in any field, as most times are; nothing for
/// another form, which the scanner reads.
std::optional<JsonTime> ReadUsualTime(std::string_view text) {
    base::PlainDateTime fields{};
    std::int64_t offset = 0;
    if (text.size() < kShortest + 5 || text[kShortest] != '.' ||
        !base::ReadPlainDateTime(text.data(), fields) || !ReadUsualZone(text.substr(kShortest + 4), offset)) {
        return std::nullopt;
    }
    const char* const digits = text.data() + kShortest + 1;
    const bool isMonth = fields.month >= 1 && fields.month <= 12;
    if (!isMonth || !IsDigit(digits[0]) || !IsDigit(digits[1]) || !IsDigit(digits[2])) return std::nullopt;
    const std::int64_t days = base::DaysOfFourDigitYear(fields.year, fields.month, fields.day);
    const int second = (fields.hour * 60 + fields.minute) * 60 + fields.second;
    return JsonTime{days * base::kSecondsPerDay + second - offset,
                    (digits[0] - '0') * 100 + (digits[1] - '0') * 10 + (digits[2] - '0')};
}

std::optional<JsonTime> ReadJsonTime(std::string_view text) {
    if (const auto usual = ReadUsualTime(text)) return usual;
    UtcFields fields{};
    if (text.size() < kShortest || !ScanFields(text, fields)) return std::nullopt;
    return JsonTime{UtcFieldsToEpoch(fields) - ReadZoneOffset(text) * 60, ReadMilliseconds(text)};
}

/// A field of an X.509 time: its leading digits, at least one.
bool ReadDigits(std::string_view field, std::int64_t& value) {
    if (!IsDigit(field.front())) return false;
    value = Scanner(field).Digits();
    return true;
}

bool ReadX509Time(std::string_view text, UtcFields& fields) {
    if (text.size() != 12 && text.size() != 14) return false;
    const std::size_t yearLength = text.size() - 10;
    if (!ReadDigits(text.substr(0, yearLength), fields.year)) return false;
    if (yearLength == 2) fields.year += fields.year < 50 ? 2000 : 1900;
    const std::array rest{&fields.month, &fields.day, &fields.hour, &fields.minute, &fields.second};
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (!ReadDigits(text.substr(yearLength + 2 * i, 2), *rest[i])) return false;
    }
    return true;
}

}  // namespace

bool DateTimeUtils::ParseX509TimeString(const char* text, long long* epochSeconds) {
    *epochSeconds = 0;
    if (text == nullptr) return false;
    const std::string_view whole(text);
    UtcFields fields{};
    if (!ReadX509Time(whole.substr(0, whole.find_first_of("+-Z")), fields)) return false;
    *epochSeconds = UtcFieldsToEpoch(fields);
    return true;
}

long long DateTimeUtils::JsonDateTimeToEpochTime(const std::string& text) {
    const auto time = ReadJsonTime(text);
    if (!time) return 0;
    return time->seconds + (time->milliseconds >= 500 ? 1 : 0);
}

TimePoint DateTimeUtils::JsonDateTimeToTimePoint(const std::string& text) {
    const auto time = ReadJsonTime(text);
    const auto second = time ? ToTimePoint(time->seconds) : std::nullopt;
    if (!second) return {};
    const TimePoint::duration fraction(time->milliseconds * 10'000);
    return *second > TimePoint::max() - fraction ? TimePoint() : *second + fraction;
}

std::optional<TimePoint> DateTimeUtils::TryParseJsonDateTime(std::string_view text) {
    const auto ticks = base::ReadRfc3339(text);  // every year of four digits fits
    return ticks ? std::optional(TimePoint(TimePoint::duration(*ticks))) : std::nullopt;
}

}  // namespace quillon
