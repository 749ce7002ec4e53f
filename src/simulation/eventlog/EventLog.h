#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/EventLogTypes.h"
#include "simulation/Modules.h"

namespace quillon::simulation {

/// Holds one stored event. Texts are UTF-8.
struct Event {
    std::string provider;
    std::uint16_t eventId = 0;
    std::uint8_t level = 0;
    std::string message;
    // Given by the log:
    std::uint64_t recordId = 0;
    std::uint64_t fileTime = 0;
    std::string channel;
    std::uint64_t place = 0;  // in the channel, which a bookmark names
};

/// One condition on a number of an event, or none: "*" and "*[System[(EventID=7)]]",
/// with EventID, EventRecordID or Level, and = < > <= >=.
class EventQuery {
public:
    /// Reads a query of one of the two forms; nothing when the text is neither.
    static std::optional<EventQuery> Parse(std::string_view text);
    bool Matches(const Event& event) const;

private:
    std::string m_property, m_operator;
    std::uint64_t m_value = 0;
};

std::string EventXml(const Event& event);

/// A system's event log in memory: channels, whose names' case does not matter, and the
/// handles of those who use them. Thread-safe. A callback runs on a thread of its own,
/// which has ended before the call that had it run returns. A signal event is not signalled.
class EventLog {
public:
    /// The one that the entry points work on. Lives as long as the process.
    static EventLog& Machine();
    static EntryPoints Exports();

    // --- For those who set it up ---

    void Reset();
    /// When it is full the oldest event goes. A name that ends in ".evtx" is the path of a saved log, which
    /// only a query for a file finds.
    void AddChannel(const std::string& name, bool isEnabled, std::size_t capacity = 10'000);
    bool IsEnabled(const std::string& channel);
    /// The event's number; 0 when the channel is disabled or missing, and nothing is kept.
    std::uint64_t Write(const std::string& channel, Event event);
    /// As Write(), but with the number that the sender gave the event, as in a collector's log.
    std::uint64_t Forward(const std::string& channel, Event event);
    /// Lets every rendering of events with a text fail with a code.
    void MakeUnreadable(const std::string& message, std::uint32_t code);
    /// Removes the events; numbers may begin anew.
    void Clear(const std::string& channel, bool restartNumbers);
    /// The code of a failure that leaves the last error 0.
    static constexpr std::uint32_t kWithoutReason = 0xFFFFFFFF;
    /// Lets the next call of an entry point fail with a code, once.
    void FailNext(const std::string& entryPoint, std::uint32_t code);
    std::size_t CountHandles();
    /// Lets a subscription write an event to its channel when it begins.
    void NoteSubscriptions(const Event& note) { m_note = note; }

private:
    using EventPointer = std::shared_ptr<const Event>;
    struct Channel {
        std::string name;
        bool isEnabled = false;
        std::size_t capacity = 0;
        std::deque<EventPointer> events;
        std::uint64_t lastRecordId = 0;
    };
    struct Config {
        std::string channel;
        bool isEnabled = false;
    };
    struct ResultSet {
        std::vector<EventPointer> events;
        std::size_t next = 0;
    };
    struct Subscription {
        std::string channel;
        EventQuery query;
        platform::EvtFunctions::SubscribeCallback callback = nullptr;
        void* context = nullptr;
        std::deque<EventPointer> undelivered;
    };
    struct Bookmark {
        std::string channel;
        std::uint64_t place = 0;
    };
    struct RenderContext {};
    struct Publisher {};
    using Object =
        std::variant<Config, ResultSet, Subscription, Bookmark, RenderContext, Publisher, EventPointer>;

    EventLog() = default;

    static void* Subscribe(void* session, void* signalEvent, const wchar_t* channelPath, const wchar_t* query,
                           void* bookmark, void* context, platform::EvtFunctions::SubscribeCallback callback,
                           unsigned long flags);
    static int Close(void* handle);
    static void* CreateRenderContext(unsigned long count, const wchar_t** valuePaths, unsigned long flags);
    static int Render(void* context, void* fragment, unsigned long flags, unsigned long bufferSize,
                      void* buffer, unsigned long* bufferUsed, unsigned long* propertyCount);
    static void* CreateBookmark(const wchar_t* bookmarkXml);
    static int UpdateBookmark(void* bookmark, void* event);
    static void* Query(void* session, const wchar_t* path, const wchar_t* query, unsigned long flags);
    static int Next(void* resultSet, unsigned long count, void** events, unsigned long timeout,
                    unsigned long flags, unsigned long* returned);
    static int Seek(void* resultSet, std::int64_t position, void* bookmark, unsigned long timeout,
                    unsigned long flags);
    static void* OpenPublisherMetadata(void* session, const wchar_t* publisher, const wchar_t* logFile,
                                       unsigned long locale, unsigned long flags);
    static int FormatMessageText(void* publisher, void* event, unsigned long messageId,
                                 unsigned long valueCount, platform::EvtVariant* values, unsigned long flags,
                                 unsigned long bufferSize, wchar_t* buffer, unsigned long* bufferUsed);
    static void* OpenChannelConfig(void* session, const wchar_t* channelPath, unsigned long flags);
    static int GetChannelConfigProperty(void* config, int property, unsigned long flags,
                                        unsigned long bufferSize, platform::EvtVariant* value,
                                        unsigned long* used);
    static int SetChannelConfigProperty(void* config, int property, unsigned long flags,
                                        const platform::EvtVariant* value);
    static int SaveChannelConfig(void* config, unsigned long flags);

    // The caller of these holds the lock.
    std::uint32_t TakeFailure(const char* entryPoint);
    Channel* Find(const std::string& name);
    void* Keep(Object object);
    template <class Kind>
    Kind* As(void* handle);
    std::uint32_t Begin(Subscription& subscription, const void* bookmark, unsigned long flags);

    void Deliver(void* subscription);
    void DeliverAll(void* subscription);
    EventPointer TakeUndelivered(void* subscription, Subscription& copy);

    std::mutex m_mutex;
    std::map<std::string, Channel> m_channels;
    std::map<std::uintptr_t, Object> m_objects;
    std::uintptr_t m_lastHandle = 0;
    std::map<std::string, std::uint32_t> m_failures;
    std::map<std::string, std::uint32_t> m_unreadable;  // codes by the text of the event
    std::optional<Event> m_note;
};

}  // namespace quillon::simulation
