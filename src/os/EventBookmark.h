#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/NumberText.h"
#include "quillon/EventLogReader.h"

namespace quillon {

/// The place of an event in its channel: its number, and its time to tell it from one that got
/// the same number after the channel was cleared.
struct EventBookmark {
    std::uint64_t recordId = 0;
    TimePoint time;

    /// Reads the text of a bookmark; nothing when it is none, as the empty text is.
    static std::optional<EventBookmark> Parse(std::string_view text) {
        const auto recordId = base::TakeUnsigned(text);
        const auto ticks = base::TakeUnsigned(text);
        if (!recordId || !ticks || !text.empty()) return std::nullopt;
        return EventBookmark{*recordId, TimePoint(TimePoint::duration(static_cast<std::int64_t>(*ticks)))};
    }
    std::string ToText() const {
        return std::to_string(recordId) + ' ' + std::to_string(time.time_since_epoch().count());
    }
    bool IsOf(const LogEvent& event) const { return recordId == event.recordId && time == event.time; }
};

}  // namespace quillon
