#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "os/EventRenderer.h"
#include "quillon/EventLogReader.h"
#include "quillon/EvtHandle.h"

namespace quillon {

/// Returns whether the system takes the texts of a source whole: it would take less of one with a NUL.
bool HasWholeTexts(const EventLogSource& source);

/// Walks over the events that match a source, in one direction.
class EventReading {
public:
    /// Takes an event's handle, which stays the reading's, and what was read of it, or null when it cannot
    /// be rendered. False ends the reading after this event.
    using Visitor = std::function<bool(void* event, const LogEvent* read)>;

    EventReading(const EventLogSource& source, unsigned long direction);
    /// Takes over a subscription that is asked for its events. Its end is only that of those there now.
    EventReading(EvtHandle subscription, bool withMessage);

    /// Returns 0, or why the source cannot be read.
    std::uint32_t ErrorCode() const { return m_errorCode; }
    /// Puts the event of a bookmark next. False when it is not there; see ErrorCode() for a failure.
    bool Seek(void* bookmark);
    /// Visits the events that are left, which it may do in several calls. Returns 0 when they or the visitor
    /// came to an end, else the code of the failure, which is 1223 when the host shuts down.
    std::uint32_t Visit(const Visitor& visitor);

private:
    /// Some systems refuse a batch of more than 2 MiB with RPC_S_INVALID_BOUND (1734), and an event may
    /// have 64 KiB.
    static constexpr unsigned long kBatch = 16;

    bool Take();
    std::uint32_t VisitOne(void* event, const Visitor& visitor, bool& goOn);

    EvtHandle m_results;
    bool m_isSubscription = false;
    EventRenderer m_renderer;
    std::array<EvtHandle, kBatch> m_events;
    unsigned long m_count = 0, m_next = 0;  // of m_events
    std::uint32_t m_errorCode = 0;
};

}  // namespace quillon
