#include "simulation/machine/MachineEventLog.h"

#include <cstdint>

namespace quillon::simulation {

void AddOwnChannel(EventLog& log) {
    constexpr const char* kName = "Quillon";
    constexpr std::uint8_t kInformation = 4;
    const auto event = [](std::uint16_t id, const char* message) {
        return Event{kName, id, kInformation, message, 0, 0, {}};
    };
    log.AddChannel(kName, true);
    log.Write(kName, event(1, "The event log is simulated"));
    log.Write(kName, event(2, "The event log's functions were looked for"));
    log.NoteSubscriptions(event(3, "The channel was subscribed to"));
}

}  // namespace quillon::simulation
