#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace quillon {

/// What a line of the log is made of.
struct LineParts {
    std::chrono::system_clock::time_point time;
    std::string_view thread, level, message;

    /// Returns the seconds since 1970, UTC.
    std::int64_t Second() const;
};

/// Makes lines of the form "2026-11-25 18:04:05.123 [ 4711] INFO  - message", with their line end and in UTC,
/// and keeps the date and time of a second. The caller serialises.
class LineFormat {
public:
    /// Replaces `line`, whose memory is used again.
    void Format(const LineParts& parts, std::string& line);

    /// Returns a time as it stands in lines.
    static std::string TextOf(std::chrono::system_clock::time_point time);

private:
    std::int64_t m_second = std::numeric_limits<std::int64_t>::min();
    std::string m_stamp;  ///< of that second
};

}  // namespace quillon
