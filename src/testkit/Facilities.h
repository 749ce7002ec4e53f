#pragma once

#include <functional>
#include <map>
#include <string>

#include "os/TestKitEntry.h"

namespace quillon::testkit {

/// Returns the library's side. Throws std::logic_error when the library is not of the kit's version.
const TestKitEntry& Library();

/// Changes what stands in place of the system's facilities, and puts it in place. Thread-safe.
void ChangeFacilities(const std::function<void(FacilityCalls&)>& change);

/// Put the simulated module of that file name ("wevtapi.dll") in place of the system's, or take it away.
void AddSimulatedModule(const std::string& name, const std::map<std::string, platform::Procedure>& functions);
void RemoveSimulatedModule(const std::string& name);

}  // namespace quillon::testkit
