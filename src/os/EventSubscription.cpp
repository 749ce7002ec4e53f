#include "quillon/EventSubscription.h"

#include <algorithm>
#include <optional>
#include <thread>
#include <utility>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "os/EventPlace.h"
#include "os/EventReading.h"
#include "platform/AuditApi.h"
#include "platform/ErrorText.h"
#include "platform/EventLogTypes.h"
#include "quillon/detail/Deadline.h"

namespace quillon {

struct EventSubscription::State {
    /// The system signals it when there are events. It is not waited for, as a shutdown must end the wait.
    platform::AuditEvent signal;
    std::optional<EventReading> reading;
    EventPlace place;
    bool hasGap = false;
    std::uint64_t unreadable = 0;
    std::uint32_t errorCode = 0;

    bool Subscribe(const EventLogSource& source, unsigned long flags);
    bool Open(const EventLogSource& source, const std::string& bookmark);
    bool TakeOne(LogEvent& event);
};

bool EventSubscription::State::Subscribe(const EventLogSource& source, unsigned long flags) {
    platform::SetLastErrorCode(0);
    const bool isAfter = (flags & platform::kEvtOriginMask) == platform::kEvtAfterBookmark;
    EvtHandle handle(EventLogProxy::EvtSubscribe(
        nullptr, signal.Get(), base::ToWide(source.name).c_str(), base::ToWide(source.query).c_str(),
        isAfter ? place.Handle() : nullptr, nullptr, nullptr, flags));
    errorCode = handle ? 0 : platform::LastError();
    if (!handle && errorCode == 0) errorCode = base::kNotFound;
    if (handle) reading.emplace(std::move(handle), source.withMessage);
    return errorCode == 0;
}

bool EventSubscription::State::Open(const EventLogSource& source, const std::string& bookmark) {
    constexpr std::uint32_t kStale = 15011, kInvalidPosition = 15012;
    signal.Reset(platform::Audit().makeEvent());
    if (source.isFile || !HasWholeTexts(source)) {
        errorCode = base::kInvalidParameter;
        return false;
    }
    const auto from = EventBookmark::Parse(bookmark, source.name);
    if (!from)
        return Subscribe(source, source.fromNow ? platform::kEvtToFutureEvents : platform::kEvtFromOldest);
    if (from->xml.empty()) return Subscribe(source, platform::kEvtFromOldest);
    if (place.MoveTo(*from)) {
        if (Subscribe(source, platform::kEvtAfterBookmark | platform::kEvtStrict)) return true;
        if (errorCode != base::kNotFound && errorCode != kStale && errorCode != kInvalidPosition)
            return false;
    }
    hasGap = true;
    place = EventPlace();
    return Subscribe(source, platform::kEvtFromOldest);
}

/// False when there is none, with the code of a failure.
bool EventSubscription::State::TakeOne(LogEvent& event) {
    bool isTaken = false;
    errorCode = base::kInvalidHandle;
    if (!reading) return false;
    errorCode = reading->Visit([&](void* handle, const LogEvent* read) {
        place.MoveTo(handle, read);  // otherwise the event comes again, which is better than never
        if (read == nullptr) ++unreadable;
        if (read != nullptr) event = *read;
        isTaken = read != nullptr;
        return !isTaken;
    });
    return isTaken;
}

EventSubscription::EventSubscription() : m_state(std::make_unique<State>()) {}
EventSubscription::~EventSubscription() = default;
EventSubscription::EventSubscription(EventSubscription&&) noexcept = default;
EventSubscription& EventSubscription::operator=(EventSubscription&&) noexcept = default;

bool EventSubscription::Open(const EventLogSource& source, const std::string& bookmark) {
    m_state = std::make_unique<State>();
    return m_state->Open(source, bookmark);
}

EventSubscription::Outcome EventSubscription::Take(LogEvent& event, std::chrono::milliseconds limit) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kLook(50);
    const auto end = detail::DeadlineAfter(limit);
    while (true) {
        if (m_state->TakeOne(event)) return Outcome::Event;
        if (m_state->errorCode == base::kCancelled) return Outcome::Shutdown;
        if (m_state->errorCode != 0) return Outcome::Failed;
        if (Clock::now() >= end) return Outcome::Timeout;
        std::this_thread::sleep_for(std::min<Clock::duration>(kLook, end - Clock::now()));
    }
}

void EventSubscription::Close() {
    m_state->reading.reset();
    m_state->signal.Reset();
}

std::string EventSubscription::Bookmark() const {
    const auto reached = m_state->place.Get();
    return reached ? reached->ToText() : std::string();
}

bool EventSubscription::HasGap() const { return m_state->hasGap; }
std::uint64_t EventSubscription::Unreadable() const { return m_state->unreadable; }
std::uint32_t EventSubscription::ErrorCode() const { return m_state->errorCode; }

}  // namespace quillon
