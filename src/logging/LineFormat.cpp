#include "logging/LineFormat.h"

#include <cstddef>

#include "base/CivilTime.h"

namespace quillon {

namespace {

constexpr std::int64_t kMicroseconds = 1'000'000;

std::int64_t MicrosecondsOf(std::chrono::system_clock::time_point time) {
    return std::chrono::floor<std::chrono::microseconds>(time.time_since_epoch()).count();
}

/// Adds a number with leading zeros.
void AddNumber(std::string& text, std::int64_t number, std::size_t digits) {
    constexpr std::int64_t kBase = 10;
    const std::size_t begin = text.size();
    text.append(digits, '0');
    for (std::size_t place = text.size(); number > 0 && place > begin; number /= kBase)
        text[--place] = static_cast<char>('0' + number % kBase);
}

/// "2026-11-25 18:04:05."
std::string StampOf(std::int64_t second) {
    constexpr std::int64_t kMinute = 60, kHour = 3'600;
    constexpr std::size_t kYear = 4, kPart = 2;
    const base::CivilDate date = base::CivilFromDays(base::FloorDivide(second, base::kSecondsPerDay));
    const std::int64_t ofDay = base::FloorRemainder(second, base::kSecondsPerDay);
    std::string text;
    AddNumber(text, date.year, kYear);
    AddNumber(text += '-', date.month, kPart);
    AddNumber(text += '-', date.day, kPart);
    AddNumber(text += ' ', ofDay / kHour, kPart);
    AddNumber(text += ':', ofDay / kMinute % kMinute, kPart);
    AddNumber(text += ':', ofDay % kMinute, kPart);
    return text += '.';
}

void AddMilliseconds(std::string& text, std::int64_t microseconds) {
    constexpr std::int64_t kMillisecond = 1'000;
    AddNumber(text, base::FloorRemainder(microseconds, kMicroseconds) / kMillisecond, 3);
}

/// Returns the blanks that fill a field of five.
std::size_t BlanksAt(std::string_view text) {
    constexpr std::size_t kWidth = 5;
    return text.size() < kWidth ? kWidth - text.size() : 0;
}

}  // namespace

std::int64_t LineParts::Second() const { return base::FloorDivide(MicrosecondsOf(time), kMicroseconds); }

void LineFormat::Format(const LineParts& parts, std::string& line) {
    if (const std::int64_t second = parts.Second(); second != m_second) {
        m_stamp = StampOf(second);
        m_second = second;
    }
    line = m_stamp;
    AddMilliseconds(line, MicrosecondsOf(parts.time));
    line.append(" [").append(BlanksAt(parts.thread), ' ').append(parts.thread).append("] ");
    line.append(parts.level).append(BlanksAt(parts.level), ' ').append(" - ");
    line.append(parts.message).push_back('\n');
}

std::string LineFormat::TextOf(std::chrono::system_clock::time_point time) {
    const std::int64_t microseconds = MicrosecondsOf(time);
    std::string text = StampOf(base::FloorDivide(microseconds, kMicroseconds));
    AddMilliseconds(text, microseconds);
    return text;
}

}  // namespace quillon
