#include "platform/ProcedureApi.h"

#include <cstdint>

#include "platform/simulated/AuditPolicy.h"
#include "platform/simulated/EventLog.h"
#include "platform/simulated/Modules.h"

namespace quillon::platform {

namespace {

using simulated::Event;
using simulated::EventLog;

/// The channel of the agent's own events, so that there is something to read.
void SeedEventLog() {
    constexpr const char* kName = "Quillon";
    constexpr std::uint8_t kInformation = 4;
    EventLog& log = EventLog::Machine();
    const auto event = [](std::uint16_t id, const char* message) {
        return Event{kName, id, kInformation, message, 0, 0, {}};
    };
    log.AddChannel(kName, true);
    log.Write(kName, event(1, "The event log is simulated"));
    log.Write(kName, event(2, "The event log's functions were looked for"));
    log.NoteSubscriptions(event(3, "The channel was subscribed to"));
}

}  // namespace

ProcedureCalls SystemProcedureCalls() {
    static simulated::Modules& modules = []() -> simulated::Modules& {
        auto& made = *new simulated::Modules;
        made.Set("advapi32.dll", simulated::AuditPolicy::Exports());
        made.Set("wevtapi.dll", EventLog::Exports());
        SeedEventLog();
        return made;
    }();
    return modules.Calls();
}

}  // namespace quillon::platform
