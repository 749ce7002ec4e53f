#include "quillon/testkit/EventLog.h"

#include "simulation/eventlog/EventLog.h"
#include "testkit/Facilities.h"

namespace quillon::testkit {

namespace {

constexpr const char* kModule = "wevtapi.dll";

simulation::EventLog& Simulated() { return simulation::EventLog::Machine(); }

}  // namespace

EventLog::EventLog() {
    Simulated().Reset();
    AddSimulatedModule(kModule, simulation::EventLog::Exports());
}

EventLog::~EventLog() {
    RemoveSimulatedModule(kModule);
    Simulated().Reset();
}

void EventLog::AddChannel(const std::string& name, bool isEnabled, std::size_t capacity) {
    Simulated().AddChannel(name, isEnabled, capacity);
}

bool EventLog::IsEnabled(const std::string& channel) const { return Simulated().IsEnabled(channel); }

std::uint64_t EventLog::Write(const std::string& channel, const LoggedEvent& event) {
    simulation::Event written;
    written.provider = event.provider;
    written.eventId = event.eventId;
    written.level = event.level;
    written.message = event.message;
    return Simulated().Write(channel, std::move(written));
}

void EventLog::Clear(const std::string& channel, bool restartNumbers) {
    Simulated().Clear(channel, restartNumbers);
}

void EventLog::FailNext(const std::string& function, std::uint32_t code) {
    Simulated().FailNext(function, code);
}

std::size_t EventLog::CountHandles() const { return Simulated().CountHandles(); }

}  // namespace quillon::testkit
