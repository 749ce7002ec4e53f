#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/Export.h"
#include "quillon/TimePoint.h"
#include "quillon/VariantList.h"

namespace quillon {

class EventPlace;
class IApplicationDataStore;

/// Holds what the event log says about one event. Texts are UTF-8; a member that the event does not
/// have is empty or 0.
struct LogEvent {
    std::uint64_t recordId = 0;  ///< grows within a channel; may start again at 1 when it is cleared
    TimePoint time;
    std::string provider;
    std::uint32_t eventId = 0;
    std::uint32_t level = 0;  ///< 1 critical, 2 error, 3 warning, 4 information, 5 verbose
    std::string channel;
    std::string computer;
    std::string xml;
    std::uint32_t task = 0;
    std::uint32_t opcode = 0;
    std::uint64_t keywords = 0;
    std::uint32_t processId = 0;
    std::uint32_t threadId = 0;
    std::string user;     ///< a security identifier, such as S-1-5-18
    std::string message;  ///< in the system's language; read only when EventLogSource wants it
};

/// Says what is read. Texts are UTF-8.
struct EventLogSource {
    std::string name;         ///< a channel, or the path of an .evtx file
    std::string query = "*";  ///< XPath that the events must match
    bool isFile = false;
    bool fromNow = false;      ///< a first reading visits nothing and notes what is there already
    bool withMessage = false;  ///< messages cost time: each provider's texts are loaded
};

/// Reads a channel of the event log from the place where the last reading ended, even if that was in
/// another process. The place is kept in a data store as the system's own bookmark, so it holds in a
/// collector's log as well, where the numbers of the events are their senders'. When the channel was
/// cleared, or has rolled over past that event, reading starts with the oldest event and the result
/// says so. An event that the system cannot render is counted and left out. Reading ends early, with
/// code 1223 (ERROR_CANCELLED), when the host shuts down, and goes on from there the next time.
/// EventLogProxy::Initialize() comes first; without the interface every reading fails with code 120
/// (ERROR_CALL_NOT_IMPLEMENTED). A reader is used by one thread at a time, as its store is. Nothing is
/// logged.
///
/// @code
/// void PrintNew(IApplicationDataStore& store) {
///     const EventLogReader reader("System", store);
///     const auto result = reader.ReadNew([](const LogEvent& event) {
///         std::cout << event.recordId << ' ' << event.provider << '\n';
///         return true;
///     });
///     if (result.errorCode != 0) std::cout << StringUtils::GetErrorAsString(result.errorCode) << '\n';
/// }
/// @endcode
class QUILLON_API EventLogReader {
public:
    /// Takes an event, on the thread of the reading; false ends the reading after this event.
    using Visitor = std::function<bool(const LogEvent&)>;

    /// Says where a reading started.
    enum class Start {
        Oldest,  ///< nothing had been read before
        Bookmark,
        Gap,  ///< events may be missing between the last reading and this one
        Now,  ///< nothing had been read before, and only what comes from now on is wanted
    };
    /// Says how a reading ended.
    struct Result {
        std::uint32_t errorCode = 0;  ///< the system's; 0 when all went well
        Start start = Start::Oldest;
        std::uint64_t visited = 0;
        std::uint64_t unreadable = 0;  ///< events that are there and cannot be rendered
    };

    /// Names the channel, in UTF-8. The store is not owned and must live as long as the reader.
    EventLogReader(std::string channel, IApplicationDataStore& store);
    /// Takes more than the name of a channel.
    EventLogReader(EventLogSource source, IApplicationDataStore& store);

    /// Visits the events that are new, oldest first, and returns how that ended. The place is kept in
    /// the store, as the property "EventLogBookmark." and the name in upper case, followed by the query
    /// unless it is "*", also when the reading fails or the visitor throws; the event that it threw for is
    /// visited again next time.
    Result ReadNew(const Visitor& visitor) const;

    /// Visits the events that match an XPath query ("*" for all), newest first.
    static Result Query(const std::string& channel, const std::string& query, const Visitor& visitor);
    static Result Query(const EventLogSource& source, const Visitor& visitor);
    /// Reads an event that a query or a subscription gave, whose handle stays the caller's. Returns
    /// false, with the reason as the last error, on failure.
    [[nodiscard]] static bool Read(void* event, LogEvent& result);

    /// Returns a table without rows with the columns RecordId, Time, Provider, EventId, Level, Channel,
    /// Computer, Task, Opcode, Keywords (hexadecimal), ProcessId, ThreadId, User, Message and Xml.
    static DataTable MakeTable();
    /// Returns the event as a row of MakeTable(), its time in ISO 8601.
    static VariantList ToRow(const LogEvent& event);

private:
    Result Continue(std::string& bookmark, EventPlace& place, const Visitor& visitor) const;
    std::string PropertyName() const;

    EventLogSource m_source;
    IApplicationDataStore& m_store;
};

}  // namespace quillon
