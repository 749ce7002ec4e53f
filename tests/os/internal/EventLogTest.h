#pragma once

#include <gmock/gmock.h>

#include "os/EventLogState.h"
#include "quillon/EventLogProxy.h"
#include "simulation/eventlog/EventLog.h"
#include "support/RecordingLogger.h"

namespace quillon::test {

/// The simulated event log, empty and bound.
class EventLogTest : public testing::Test {
protected:
    EventLogTest() {
        Bind();  // fills the machine's log when it is the first to ask for functions
        events.Reset();
        EventLogProxy::Initialize(log);
        log.Forget();
    }
    ~EventLogTest() override {
        EXPECT_EQ(events.CountHandles(), 0u);
        EXPECT_TRUE(EventLogState::Get().channels.empty());
        platform::ReplaceProcedureCalls(platform::SystemProcedureCalls());
        EventLogState::Get().ForgetFunctions();
    }

    void Bind() {
        modules.Set("wevtapi.dll", simulation::EventLog::Exports());
        platform::ReplaceProcedureCalls(modules.Calls());
        EventLogState::Get().ForgetFunctions();
    }
    std::uint64_t Write(const std::string& channel, const std::string& message) {
        return events.Write(channel, {"Provider", 7, 4, message, 0, 0, {}});
    }

    simulation::EventLog& events = simulation::EventLog::Machine();
    simulation::Modules modules;
    RecordingLogger log;
};

}  // namespace quillon::test
