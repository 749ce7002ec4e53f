#include "os/EventReading.h"

#include <utility>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "os/EventLogState.h"
#include "platform/ErrorText.h"
#include "platform/EventLogTypes.h"
#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"

namespace quillon {

namespace {

constexpr std::uint32_t kTimedOut = 1460;
constexpr unsigned long kWaitMilliseconds = 100;  // between looks at the shutdown monitor

bool IsShutdownRequested() {
    auto* const monitor = ServiceLocator::Get<IShutdownMonitor>(true);
    return monitor != nullptr && monitor->IsShutdownRequested();
}

/// A failure without a reason is one all the same.
std::uint32_t FailureCode() {
    const std::uint32_t code = platform::LastError();
    return code != 0 ? code : base::kNotFound;
}

}  // namespace

bool HasWholeTexts(const EventLogSource& source) {
    return source.name.find('\0') == std::string::npos && source.query.find('\0') == std::string::npos;
}

EventReading::EventReading(const EventLogSource& source, unsigned long direction)
    : m_renderer(source.withMessage) {
    const unsigned long kind = source.isFile ? platform::kEvtFilePath : platform::kEvtChannelPath;
    if (!HasWholeTexts(source)) {
        m_errorCode = base::kInvalidParameter;
        return;
    }
    platform::SetLastErrorCode(0);
    m_results.Reset(EventLogProxy::EvtQuery(nullptr, base::ToWide(source.name).c_str(),
                                            base::ToWide(source.query).c_str(), kind | direction));
    if (!m_results) m_errorCode = FailureCode();
}

EventReading::EventReading(EvtHandle subscription, bool withMessage)
    : m_results(std::move(subscription)), m_isSubscription(true), m_renderer(withMessage) {}

bool EventReading::Seek(void* bookmark) {
    constexpr std::uint32_t kStale = 15011, kInvalidPosition = 15012;
    const auto seek = EventLogState::Get().functions.seek;
    if (m_errorCode != 0) return false;
    if (seek == nullptr) {
        m_errorCode = base::kCallNotImplemented;
        return false;
    }
    if (seek(m_results.Get(), 0, bookmark, 0,
             platform::kEvtSeekRelativeToBookmark | platform::kEvtSeekStrict) != 0)
        return true;
    const std::uint32_t code = FailureCode();
    if (code != base::kNotFound && code != kStale && code != kInvalidPosition) m_errorCode = code;
    return false;
}

bool EventReading::Take() {
    std::array<void*, kBatch> handles{};
    m_count = m_next = 0;
    if (EventLogProxy::EvtNext(m_results.Get(), kBatch, handles.data(), kWaitMilliseconds, 0, &m_count) == 0)
        return false;
    for (unsigned long i = 0; i < m_count; ++i) m_events[i].Reset(handles[i]);
    return true;
}

std::uint32_t EventReading::Visit(const Visitor& visitor) {
    bool goOn = m_errorCode == 0;
    std::uint32_t code = m_errorCode;
    while (goOn && code == 0) {
        if (m_next < m_count) {
            code = VisitOne(m_events[m_next++].Get(), visitor, goOn);
        } else if (IsShutdownRequested()) {
            code = base::kCancelled;
        } else if (!Take()) {
            code = FailureCode();
            if (code == base::kNoMoreItems || (m_isSubscription && code == kTimedOut)) return 0;
            if (code == kTimedOut) code = 0;
        }
    }
    return code;
}

/// Tries twice, so that only what lasts is left out.
std::uint32_t EventReading::VisitOne(void* event, const Visitor& visitor, bool& goOn) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        LogEvent read;
        if (m_renderer.Read(event, read)) {
            goOn = visitor(event, &read);
            return 0;
        }
        const std::uint32_t code = platform::LastError();
        if (IsPassingFailure(code)) return code;
    }
    goOn = visitor(event, nullptr);
    return 0;
}

}  // namespace quillon
