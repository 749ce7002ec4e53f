#include "os/EventRenderer.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>

#include "base/CivilTime.h"
#include "base/ErrorCodes.h"
#include "base/SidText.h"
#include "base/Utf.h"
#include "os/EventLogState.h"
#include "platform/ErrorText.h"

namespace quillon {

namespace {

using platform::EvtType;
using platform::EvtVariant;

std::string Text(const EvtVariant& value) {
    return value.type == EvtType::String && value.text != nullptr ? base::ToUtf8(value.text) : "";
}

/// Returns the number in the width of its type: the system leaves the other bytes undefined.
std::uint64_t Number(const EvtVariant& value) {
    switch (value.type) {
        case EvtType::Byte:
            return value.byte;
        case EvtType::UInt16:
            return value.uint16;
        case EvtType::UInt32:
            return value.uint32;
        case EvtType::UInt64:
        case EvtType::HexInt64:
        case EvtType::FileTime:
            return value.number;
        default:
            return 0;
    }
}

/// Returns whether a text could be formatted but for some of its inserts.
bool IsUnresolvedInsert(std::uint32_t code) {
    constexpr std::uint32_t kUnresolvedValue = 15029, kTooManyInserts = 15031;
    return code >= kUnresolvedValue && code <= kTooManyInserts;
}

std::uint32_t SmallNumber(const EvtVariant& value) { return static_cast<std::uint32_t>(Number(value)); }

/// A time past the end of the system's clock, which a saved log may hold, is that end.
TimePoint Time(const EvtVariant& value) {
    constexpr std::uint64_t kEnd = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kBefore1970 =
        -base::DaysFromCivil(1601, 1, 1) * base::kSecondsPerDay * base::kTicksPerSecond;
    return TimePoint(
        TimePoint::duration(static_cast<std::int64_t>(std::min(Number(value), kEnd)) - kBefore1970));
}

}  // namespace

bool IsPassingFailure(std::uint32_t code) {
    constexpr std::uint32_t kOutOfMemory = 14, kFirstOfRpc = 1700, kLastOfRpc = 1839;
    return code == base::kNotEnoughMemory || code == kOutOfMemory || code == base::kCallNotImplemented ||
           (code >= kFirstOfRpc && code <= kLastOfRpc);
}

bool EventRenderer::Read(void* event, LogEvent& result) {
    if (!m_context)
        m_context.Reset(EventLogProxy::EvtCreateRenderContext(0, nullptr, platform::kEvtContextSystem));
    if (!m_context || !ReadValues(event, result) || !ReadXml(event, result)) return false;
    if (m_withMessage) result.message = Message(event, result.provider);
    return true;
}

/// Renders an event, or a part of it, and makes the buffer as large as that needs.
bool EventRenderer::Render(void* context, void* event, unsigned long flags, unsigned long& propertyCount) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        const std::size_t size = m_buffer.size() * sizeof(EvtVariant);
        unsigned long used = 0;
        if (EventLogProxy::EvtRender(context, event, flags, static_cast<unsigned long>(size), m_buffer.data(),
                                     &used, &propertyCount) != 0)
            return true;
        if (platform::LastError() != base::kInsufficientBuffer) break;
        m_buffer.resize(used / sizeof(EvtVariant) + 1);
    }
    return false;
}

bool EventRenderer::ReadValues(void* event, LogEvent& result) {
    unsigned long count = 0;
    if (!Render(m_context.Get(), event, platform::kEvtRenderValues, count)) return false;
    if (count < platform::EvtSystemPropertyCount) {
        platform::SetLastErrorCode(base::kInvalidData);
        return false;
    }
    const auto& values = m_buffer;
    result.provider = Text(values[platform::EvtProviderName]);
    result.eventId = SmallNumber(values[platform::EvtEventId]);
    result.level = SmallNumber(values[platform::EvtLevel]);
    result.task = SmallNumber(values[platform::EvtTask]);
    result.opcode = SmallNumber(values[platform::EvtOpcode]);
    result.keywords = Number(values[platform::EvtKeywords]);
    result.time = Time(values[platform::EvtTimeCreated]);
    result.recordId = Number(values[platform::EvtRecordId]);
    result.processId = SmallNumber(values[platform::EvtProcessId]);
    result.threadId = SmallNumber(values[platform::EvtThreadId]);
    result.channel = Text(values[platform::EvtChannel]);
    result.computer = Text(values[platform::EvtComputer]);
    result.user = User(values[platform::EvtUserId]);
    return true;
}

/// The identifier lies in the buffer, behind the values.
std::string EventRenderer::User(const EvtVariant& value) const {
    if (value.type != EvtType::Sid || value.sid == nullptr) return {};
    const auto* const end = reinterpret_cast<const unsigned char*>(m_buffer.data() + m_buffer.size());
    const auto* const begin = reinterpret_cast<const unsigned char*>(m_buffer.data());
    if (value.sid < begin || value.sid >= end) return {};
    return base::SidText({value.sid, static_cast<std::size_t>(end - value.sid)});
}

bool EventRenderer::ReadXml(void* event, LogEvent& result) {
    unsigned long count = 0;
    if (!Render(nullptr, event, platform::kEvtRenderXml, count)) return false;
    result.xml = base::ToUtf8(reinterpret_cast<const wchar_t*>(m_buffer.data()));
    return true;
}

/// A provider that is not known here gives null, for which an event that was forwarded brings its text.
/// A subscription lasts as long as the process, and every program may write under any name. So there is an
/// end to what is kept, and a provider that was installed meanwhile is found.
void* EventRenderer::Publisher(const std::string& provider) {
    constexpr std::size_t kMostPublishers = 64;
    constexpr std::chrono::minutes kLongestKept(10);
    const auto open = EventLogState::Get().functions.openPublisherMetadata;
    const auto now = std::chrono::steady_clock::now();
    if (m_publishers.size() >= kMostPublishers || now - m_publishersSince > kLongestKept) {
        m_publishers.clear();
        m_publishersSince = now;
    }
    const auto [place, isNew] = m_publishers.try_emplace(provider);
    if (isNew && open != nullptr)
        place->second.Reset(open(nullptr, base::ToWide(provider).c_str(), nullptr, 0, 0));
    return place->second.Get();
}

/// An event without a text is as good as one with it. A text with inserts for which the event has no value,
/// such as "%3", comes with a failure.
std::string EventRenderer::Message(void* event, const std::string& provider) {
    const auto format = EventLogState::Get().functions.formatMessage;
    if (format == nullptr) return {};
    void* const publisher = Publisher(provider);
    std::wstring text(512, L'\0');
    for (int attempt = 0; attempt < 2; ++attempt) {
        unsigned long used = 0;
        if (format(publisher, event, 0, 0, nullptr, platform::kEvtFormatEvent,
                   static_cast<unsigned long>(text.size()), text.data(), &used) != 0)
            return base::ToUtf8(text.c_str());
        const std::uint32_t code = platform::LastError();
        if (IsUnresolvedInsert(code)) return base::ToUtf8(text.c_str());
        if (code != base::kInsufficientBuffer || used <= text.size()) break;
        text.resize(used);
    }
    return {};
}

}  // namespace quillon
