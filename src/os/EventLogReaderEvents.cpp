#include <cstddef>
#include <vector>

#include "base/CivilTime.h"
#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/EventLogTypes.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/EventLogReader.h"
#include "quillon/EvtHandle.h"

namespace quillon {

namespace {

using platform::EvtType;
using platform::EvtVariant;

/// Holds an array of variants followed by the texts that they point to, or a text.
using Rendered = std::vector<EvtVariant>;

/// Renders an event, or a part of it, in a buffer that is large enough; empty on failure, see the last
/// error.
Rendered Render(void* context, void* event, unsigned long flags, unsigned long& propertyCount) {
    Rendered buffer(128);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const std::size_t size = buffer.size() * sizeof(EvtVariant);
        unsigned long used = 0;
        if (EventLogProxy::EvtRender(context, event, flags, static_cast<unsigned long>(size), buffer.data(),
                                     &used, &propertyCount) != 0) {
            return buffer;
        }
        if (platform::LastError() != base::kInsufficientBuffer) break;
        buffer.resize(used / sizeof(EvtVariant) + 1);
    }
    return {};
}

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
        case EvtType::UInt64:
        case EvtType::FileTime:
            return value.number;
        default:
            return 0;
    }
}

TimePoint Time(const EvtVariant& value) {
    constexpr std::int64_t kBefore1970 =
        -base::DaysFromCivil(1601, 1, 1) * base::kSecondsPerDay * base::kTicksPerSecond;
    return TimePoint(TimePoint::duration(static_cast<std::int64_t>(Number(value)) - kBefore1970));
}

bool ReadValues(void* context, void* event, LogEvent& result) {
    unsigned long count = 0;
    const Rendered values = Render(context, event, platform::kEvtRenderValues, count);
    if (values.empty()) return false;
    if (count < platform::EvtSystemPropertyCount) {
        platform::SetLastErrorCode(base::kInvalidData);
        return false;
    }
    result.provider = Text(values[platform::EvtProviderName]);
    result.eventId = static_cast<std::uint32_t>(Number(values[platform::EvtEventId]));
    result.level = static_cast<std::uint32_t>(Number(values[platform::EvtLevel]));
    result.time = Time(values[platform::EvtTimeCreated]);
    result.recordId = Number(values[platform::EvtRecordId]);
    result.channel = Text(values[platform::EvtChannel]);
    result.computer = Text(values[platform::EvtComputer]);
    return true;
}

bool ReadXml(void* event, LogEvent& result) {
    unsigned long count = 0;
    const Rendered text = Render(nullptr, event, platform::kEvtRenderXml, count);
    if (text.empty()) return false;
    result.xml = base::ToUtf8(reinterpret_cast<const wchar_t*>(text.data()));
    return true;
}

}  // namespace

bool EventLogReader::Read(void* event, LogEvent& result) {
    EvtHandle context(EventLogProxy::EvtCreateRenderContext(0, nullptr, platform::kEvtContextSystem));
    const bool isRead = context && ReadValues(context.Get(), event, result) && ReadXml(event, result);
    const std::uint32_t code = platform::LastError();
    context.Reset();
    platform::SetLastErrorCode(code);
    return isRead;
}

DataTable EventLogReader::MakeTable() {
    DataTable table;
    table.AddLongLongCol("RecordId");
    table.AddStringCol("Time");
    table.AddStringCol("Provider");
    table.AddLongLongCol("EventId");
    table.AddLongLongCol("Level");
    table.AddStringCol("Channel");
    table.AddStringCol("Computer");
    table.AddStringCol("Xml");
    return table;
}

VariantList EventLogReader::ToRow(const LogEvent& event) {
    VariantList row;
    row.Add("RecordId", static_cast<long long>(event.recordId));
    row.Add("Time", DateTimeUtils::FormatTimeAsISO8601(event.time));
    row.Add("Provider", event.provider);
    row.Add("EventId", event.eventId);
    row.Add("Level", event.level);
    row.Add("Channel", event.channel);
    row.Add("Computer", event.computer);
    row.Add("Xml", event.xml);
    return row;
}

}  // namespace quillon
