#include <array>
#include <cinttypes>
#include <cstdio>

#include "os/EventRenderer.h"
#include "platform/ErrorText.h"
#include "quillon/DateTimeUtils.h"

namespace quillon {

namespace {

/// As the event log writes them.
std::string KeywordsText(std::uint64_t keywords) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%" PRIx64, keywords);
    return text.data();
}

}  // namespace

bool EventLogReader::Read(void* event, LogEvent& result) {
    std::uint32_t code = 0;
    bool isRead = false;
    {
        EventRenderer renderer(false);
        isRead = renderer.Read(event, result);
        code = platform::LastError();
    }
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
    table.AddLongLongCol("Task");
    table.AddLongLongCol("Opcode");
    table.AddStringCol("Keywords");
    table.AddLongLongCol("ProcessId");
    table.AddLongLongCol("ThreadId");
    table.AddStringCol("User");
    table.AddStringCol("Message");
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
    row.Add("Task", event.task);
    row.Add("Opcode", event.opcode);
    row.Add("Keywords", KeywordsText(event.keywords));
    row.Add("ProcessId", event.processId);
    row.Add("ThreadId", event.threadId);
    row.Add("User", event.user);
    row.Add("Message", event.message);
    row.Add("Xml", event.xml);
    return row;
}

}  // namespace quillon
