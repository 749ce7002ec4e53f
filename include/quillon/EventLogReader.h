#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/Export.h"
#include "quillon/TimePoint.h"
#include "quillon/VariantList.h"

namespace quillon {

class IApplicationDataStore;

/// What the event log tells of an event. Texts are UTF-8.
struct LogEvent {
    std::uint64_t recordId = 0;  ///< Counts on in a channel, and may begin anew when that is cleared.
    TimePoint time;
    std::string provider;
    std::uint32_t eventId = 0;
    std::uint32_t level = 0;  ///< 1 critical, 2 error, 3 warning, 4 information, 5 verbose
    std::string channel;
    std::string computer;
    std::string xml;
};

/// Reads a channel of the event log from where the last reading ended, even if that was in another
/// process. Where that is stands in a data store, as the number and the time of the last event: when
/// the channel was cleared, or has rolled over past that event, reading begins with the oldest one
/// and says so. Needs EventLogProxy::Initialize(); without the interface every reading fails with
/// code 120. One thread at a time, as the store.
class QUILLON_API EventLogReader {
public:
    /// Takes an event; false ends the reading after it.
    using Visitor = std::function<bool(const LogEvent&)>;

    enum class Start {
        Oldest,  ///< nothing had been read before
        Bookmark,
        Gap,  ///< events may be missing between the last reading and this one
    };
    struct Result {
        std::uint32_t errorCode = 0;  ///< the system's; 0 when all went well
        Start start = Start::Oldest;
        std::uint64_t visited = 0;
    };

    /// `store` is used for each reading and outlives the reader.
    EventLogReader(std::string channel, IApplicationDataStore& store);

    /// Visits what is new, oldest first. What was visited is kept in the store also when the
    /// reading fails or the visitor throws; the event that it threw for is visited again.
    Result ReadNew(const Visitor& visitor) const;

    /// Visits the events that match an XPath query ("*" for all), newest first.
    static Result Query(const std::string& channel, const std::string& query, const Visitor& visitor);
    /// Reads an event that a query or subscription gave; false on failure, see the last error.
    static bool Read(void* event, LogEvent& result);

    static DataTable MakeTable();
    /// The event as a row of MakeTable(), its time in ISO 8601.
    static VariantList ToRow(const LogEvent& event);

private:
    Result Continue(std::string& bookmark, const Visitor& visitor) const;
    std::string PropertyName() const;

    std::string m_channel;
    IApplicationDataStore& m_store;
};

}  // namespace quillon
