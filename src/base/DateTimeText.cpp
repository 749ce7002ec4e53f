#include "base/DateTimeText.h"

#include "base/Characters.h"
#include "base/CivilTime.h"

namespace quillon::base {

namespace {

/// Keeps the rest of a text that is not read yet.
class Reader {
public:
    explicit Reader(std::string_view text) : m_rest(text) {}

    [[nodiscard]] bool AtEnd() const { return m_rest.empty(); }

    bool Take(char c) {
        if (!m_rest.starts_with(c)) return false;
        m_rest.remove_prefix(1);
        return true;
    }

    /// A number of exactly `digits` digits, between two limits.
    bool Take(int digits, int least, int most, int& number) {
        number = 0;
        for (int i = 0; i < digits; ++i) {
            if (AtEnd() || !IsDigit(m_rest.front())) return false;
            number = number * 10 + (m_rest.front() - '0');
            m_rest.remove_prefix(1);
        }
        return number >= least && number <= most;
    }

    /// Digits past the seventh count for nothing.
    bool TakeFraction(std::int64_t& ticks) {
        if (AtEnd() || !IsDigit(m_rest.front())) return false;
        ticks = 0;
        for (std::int64_t unit = kTicksPerSecond / 10; !AtEnd() && IsDigit(m_rest.front()); unit /= 10) {
            ticks += unit * (m_rest.front() - '0');
            m_rest.remove_prefix(1);
        }
        return true;
    }

private:
    std::string_view m_rest;
};

bool TakeDate(Reader& reader, std::int64_t& days) {
    int year = 0, month = 0, day = 0;
    if (!reader.Take(4, 0, 9999, year) || !reader.Take('-') || !reader.Take(2, 1, 12, month) ||
        !reader.Take('-') || !reader.Take(2, 1, 31, day)) {
        return false;
    }
    days = DaysFromCivil(year, month, day);
    return CivilFromDays(days).day == day;
}

enum class Seconds { Needed, Optional };

bool TakeTime(Reader& reader, Seconds wanted, std::int64_t& seconds, std::int64_t& fraction) {
    int hour = 0, minute = 0, second = 0;
    if (!reader.Take(2, 0, 23, hour) || !reader.Take(':') || !reader.Take(2, 0, 59, minute)) return false;
    const bool hasSecond = reader.Take(':');
    if (hasSecond ? !reader.Take(2, 0, 60, second) : wanted == Seconds::Needed) return false;
    seconds = (hour * 60 + minute) * 60 + second;
    return !reader.Take('.') || reader.TakeFraction(fraction);
}

enum class Colon { Needed, Optional };

/// Seconds to the east, behind a sign.
bool TakeOffset(Reader& reader, Colon colon, std::int64_t& offset) {
    const bool isWest = reader.Take('-');
    int hours = 0, minutes = 0;
    if ((!isWest && !reader.Take('+')) || !reader.Take(2, 0, 23, hours)) return false;
    if (!reader.Take(':') && colon == Colon::Needed) return false;
    if (!reader.Take(2, 0, 59, minutes)) return false;
    offset = (hours * 60 + minutes) * 60;
    if (isWest) offset = -offset;
    return true;
}

bool TakeZone(Reader& reader, std::int64_t& offset) {
    reader.Take(' ');
    return reader.AtEnd() || reader.Take('Z') || TakeOffset(reader, Colon::Optional, offset);
}

bool TakeStrictZone(Reader& reader, std::int64_t& offset) {
    constexpr std::int64_t kLargestOffset = 14 * 60 * 60;
    if (reader.Take('Z') || reader.Take('z')) return true;
    return TakeOffset(reader, Colon::Needed, offset) && offset <= kLargestOffset && offset >= -kLargestOffset;
}

std::int64_t ToTicks(std::int64_t days, std::int64_t seconds, std::int64_t offset, std::int64_t fraction) {
    return (days * kSecondsPerDay + seconds - offset) * kTicksPerSecond + fraction;
}

}  // namespace

std::optional<std::int64_t> ReadDateTime(std::string_view text) {
    Reader reader(text);
    std::int64_t days = 0, seconds = 0, fraction = 0, offset = 0;
    if (!TakeDate(reader, days)) return std::nullopt;
    if (!reader.AtEnd()) {
        if (!reader.Take('T') && !reader.Take(' ')) return std::nullopt;
        if (!TakeTime(reader, Seconds::Optional, seconds, fraction) || !TakeZone(reader, offset))
            return std::nullopt;
    }
    if (!reader.AtEnd()) return std::nullopt;
    return ToTicks(days, seconds, offset, fraction);
}

std::optional<std::int64_t> ReadRfc3339(std::string_view text) {
    Reader reader(text);
    std::int64_t days = 0, seconds = 0, fraction = 0, offset = 0;
    if (!TakeDate(reader, days) || !(reader.Take('T') || reader.Take('t')) ||
        !TakeTime(reader, Seconds::Needed, seconds, fraction) || !TakeStrictZone(reader, offset) ||
        !reader.AtEnd()) {
        return std::nullopt;
    }
    return ToTicks(days, seconds, offset, fraction);
}

}  // namespace quillon::base
