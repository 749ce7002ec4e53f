#pragma once

#include <string>

#include "os/EventBookmark.h"
#include "quillon/EvtHandle.h"

namespace quillon {

/// Follows the events of a reading by the system's bookmark.
class EventPlace {
public:
    /// Moves the place to an event, which may be unreadable and is then null in `read`. False with the
    /// reason as the last error.
    bool MoveTo(void* event, const LogEvent* read);
    /// Moves to the bookmark of an earlier reading.
    bool MoveTo(const EventBookmark& bookmark);
    /// Returns the text of the system's bookmark and what else is known about the event; nothing on failure.
    std::optional<EventBookmark> Get() const;
    void* Handle() const { return m_handle.Get(); }

private:
    EvtHandle m_handle;
    std::uint64_t m_recordId = 0;
    TimePoint m_time;
};

}  // namespace quillon
