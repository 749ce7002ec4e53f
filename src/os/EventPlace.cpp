#include "os/EventPlace.h"

#include <vector>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/EventLogTypes.h"

namespace quillon {

bool EventPlace::MoveTo(void* event, const LogEvent* read) {
    if (!m_handle) m_handle.Reset(EventLogProxy::EvtCreateBookmark(nullptr));
    if (!m_handle || EventLogProxy::EvtUpdateBookmark(m_handle.Get(), event) == 0) return false;
    m_recordId = read != nullptr ? read->recordId : 0;
    m_time = read != nullptr ? read->time : TimePoint();
    return true;
}

bool EventPlace::MoveTo(const EventBookmark& bookmark) {
    m_handle.Reset(EventLogProxy::EvtCreateBookmark(base::ToWide(bookmark.xml).c_str()));
    m_recordId = bookmark.recordId;
    m_time = bookmark.time;
    return static_cast<bool>(m_handle);
}

std::optional<EventBookmark> EventPlace::Get() const {
    if (!m_handle) return std::nullopt;
    std::vector<wchar_t> text(1024);
    for (int attempt = 0; attempt < 2; ++attempt) {
        unsigned long used = 0, count = 0;
        if (EventLogProxy::EvtRender(nullptr, m_handle.Get(), platform::kEvtRenderBookmark,
                                     static_cast<unsigned long>(text.size() * sizeof(wchar_t)), text.data(),
                                     &used, &count) != 0)
            return EventBookmark{m_recordId, m_time, base::ToUtf8(text.data())};
        if (platform::LastError() != base::kInsufficientBuffer) break;
        text.resize(used / sizeof(wchar_t) + 1);
    }
    return std::nullopt;
}

}  // namespace quillon
