#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/NumberText.h"
#include "quillon/EventLogReader.h"

namespace quillon {

/// The place of an event in its channel: the system's bookmark, and the event's number and time, which tell
/// it from one that got the same place after the channel was cleared. A number of 0 tells nothing, as of
/// an event that could not be read.
struct EventBookmark {
    std::uint64_t recordId = 0;
    TimePoint time;
    std::string xml;  ///< the system's, UTF-8; empty before the first event

    /// Reads the text of a bookmark; nothing when it is none, as the empty text is. One without the
    /// system's was kept by an older version, for which the number was the place.
    static std::optional<EventBookmark> Parse(std::string_view text, const std::string& channel) {
        const auto recordId = base::TakeUnsigned(text);
        const auto ticks = base::TakeUnsigned(text);
        if (!recordId || !ticks) return std::nullopt;
        EventBookmark bookmark{
            *recordId, TimePoint(TimePoint::duration(static_cast<std::int64_t>(*ticks))), {}};
        if (text.starts_with(" <")) {
            bookmark.xml = text.substr(1);
        } else if (!text.empty()) {
            return std::nullopt;
        } else if (*recordId != 0) {
            bookmark.xml = "<BookmarkList><Bookmark Channel='" + channel + "' RecordId='" +
                           std::to_string(*recordId) + "' IsCurrent='true'/></BookmarkList>";
        }
        return bookmark;
    }
    std::string ToText() const {
        return std::to_string(recordId) + ' ' + std::to_string(time.time_since_epoch().count()) +
               (xml.empty() ? "" : ' ' + xml);
    }
    bool MayBeOf(const LogEvent& event) const {
        return recordId == 0 || (recordId == event.recordId && time == event.time);
    }
};

}  // namespace quillon
