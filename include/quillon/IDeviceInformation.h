#pragma once

#include "quillon/Export.h"

namespace quillon {

/// The host's knowledge of the device.
class QUILLON_API IDeviceInformation {
public:
    static const char* __InterfaceId() { return "VntItf_IDeviceInformation"; }

    virtual ~IDeviceInformation();

    /// Writes its report to the registered logger. Called on any thread that logs, while
    /// the log file is being rolled over: it must not take a lock that is held while something is logged.
    virtual void LogDeviceInformation() = 0;
};

}  // namespace quillon
