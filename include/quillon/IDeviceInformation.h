#pragma once

#include "quillon/Export.h"

namespace quillon {

/// Lets the host add its report on the device to the banner of each log file. The host implements it
/// and registers it with ServiceLocator; without it the banner has no such report.
class QUILLON_API IDeviceInformation {
public:
    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IDeviceInformation"; }

    virtual ~IDeviceInformation();

    /// Writes the report to the registered logger. Any thread that logs may call it, while the log file
    /// is being rolled over: it must not take a lock that is held while something is logged.
    virtual void LogDeviceInformation() = 0;
};

}  // namespace quillon
