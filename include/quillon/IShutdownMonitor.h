#pragma once

#include "quillon/Export.h"

namespace quillon {

/// The host's shutdown signal. Both operations are called on any thread.
class QUILLON_API IShutdownMonitor {
public:
    static const char* __InterfaceId() { return "VntItf_IShutdownMonitor"; }

    virtual ~IShutdownMonitor();

    /// Asks the host to shut down.
    virtual void RequestShutdown() = 0;
    /// True once the host is shutting down.
    virtual bool IsShutdownRequested() = 0;
};

}  // namespace quillon
