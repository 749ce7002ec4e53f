#pragma once

#include "quillon/Export.h"

namespace quillon {

/// Tells the library that the host is shutting down, so that waits for a command or a query end
/// early. The host implements it and registers it with ServiceLocator; without it nothing ends early.
/// Both operations are called on any thread, and often: they must be quick.
class QUILLON_API IShutdownMonitor {
public:
    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IShutdownMonitor"; }

    virtual ~IShutdownMonitor();

    /// Asks the host to shut down.
    virtual void RequestShutdown() = 0;
    /// Returns whether the host is shutting down; once true, it stays true.
    virtual bool IsShutdownRequested() = 0;
};

}  // namespace quillon
