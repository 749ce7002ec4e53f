#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quillon::testkit {

/// Describes an event that is written. Texts are UTF-8.
struct LoggedEvent {
    std::string provider;
    std::uint16_t eventId = 0;
    std::uint8_t level = 4;  ///< 1 critical, 2 error, 3 warning, 4 information, 5 verbose
    std::string message{};
};

/// Is the system's event log in memory, in the place of the system's for its life: EventLogProxy,
/// EventLogReader and EventSubscription reach it, on Windows and on Linux. It initialises EventLogProxy
/// for its own life; afterwards the proxy has to be initialised anew. There is one at a time. Queries are
/// "*" and "*[System[(EventID=7)]]", with EventID, EventRecordID or Level, and = < > <= >=. Thread-safe,
/// but for its beginning and end, when no subscription may be there.
///
/// @code
/// testkit::EventLog events;
/// events.AddChannel("System");
/// events.Write("System", {"Disk", 7, 2, "The device has a bad block."});
/// @endcode
class EventLog {
public:
    EventLog();
    ~EventLog();
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;

    /// Makes a channel; when it holds `capacity` events the oldest goes.
    void AddChannel(const std::string& name, bool isEnabled = true, std::size_t capacity = 10'000);
    /// Returns whether the channel is there and enabled.
    bool IsEnabled(const std::string& channel) const;
    /// Writes an event and returns its number; 0 when the channel is missing or disabled. Callbacks of
    /// subscriptions have run when it returns.
    std::uint64_t Write(const std::string& channel, const LoggedEvent& event);
    /// Removes the events; numbers may begin anew. Throws std::out_of_range for a missing channel.
    void Clear(const std::string& channel, bool restartNumbers = false);
    /// Lets the next call of a function such as "EvtNext" fail with a Windows code, once.
    void FailNext(const std::string& function, std::uint32_t code);
    /// Returns how many handles are open.
    std::size_t CountHandles() const;
};

}  // namespace quillon::testkit
