#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "quillon/EventLogReader.h"
#include "quillon/Export.h"

namespace quillon {

/// Takes the events of a channel as they are logged, one by one, on the caller's thread: there is no
/// callback that could run while something ends. EventLogProxy::Initialize() comes first; a channel that
/// is disabled is enabled by EventLogProxy::EnableChannelIfRequired(). One thread at a time uses a
/// subscription. Nothing is logged.
///
/// @code
/// EventSubscription subscription;
/// EventLogSource source{"System"};
/// source.fromNow = true;
/// if (!subscription.Open(source)) std::cout << StringUtils::GetErrorAsString(subscription.ErrorCode());
/// LogEvent event;
/// while (subscription.Take(event, std::chrono::seconds(10)) == EventSubscription::Outcome::Event)
///     std::cout << event.recordId << ' ' << event.provider << '\n';
/// @endcode
class QUILLON_API EventSubscription {
public:
    /// Says how a wait for an event ended.
    enum class Outcome {
        Event,
        Timeout,
        Shutdown,  ///< the host shuts down
        Failed     ///< see ErrorCode()
    };

    EventSubscription();
    ~EventSubscription();
    EventSubscription(EventSubscription&&) noexcept;
    EventSubscription& operator=(EventSubscription&&) noexcept;
    EventSubscription(const EventSubscription&) = delete;
    EventSubscription& operator=(const EventSubscription&) = delete;

    /// Subscribes to the events of a channel, in place of an earlier subscription: to those after the one
    /// of `bookmark`, a text of Bookmark(), or without one to those from now on or from the oldest on, as
    /// `source` says. When the event of the bookmark is not there any more the oldest is the first, and
    /// HasGap() says so. Returns false for a file and on failure; see ErrorCode().
    [[nodiscard]] bool Open(const EventLogSource& source, const std::string& bookmark = {});
    /// Waits for the next event, at most that long. Events that cannot be rendered are counted and left
    /// out.
    Outcome Take(LogEvent& event, std::chrono::milliseconds limit);
    /// Ends the subscription; what has not been taken is not delivered.
    void Close();

    /// Returns the place after the last event that was taken, to go on from there in another process;
    /// empty before the first.
    std::string Bookmark() const;
    /// Returns whether events may be missing after the bookmark that was given.
    bool HasGap() const;
    /// Returns how many events could not be rendered.
    std::uint64_t Unreadable() const;
    /// Returns the system's code of the last failure; 0 when there was none.
    std::uint32_t ErrorCode() const;

private:
    struct State;

    std::unique_ptr<State> m_state;
};

}  // namespace quillon
