#pragma once

#include "simulation/registry/Registry.h"

namespace quillon::simulation {

/// Returns the local machine's hive, which starts with the facts of the system that the library reads.
/// It lives as long as the process.
Registry& LocalMachine();
/// Writes these facts into a hive.
void AddMachineFacts(Registry& registry);

}  // namespace quillon::simulation
