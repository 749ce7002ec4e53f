#pragma once

#include "simulation/eventlog/EventLog.h"

namespace quillon::simulation {

/// Adds the channel "Quillon" with some events, so that a reader of the machine's log finds something.
void AddOwnChannel(EventLog& log);

}  // namespace quillon::simulation
