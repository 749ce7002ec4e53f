#pragma once

#include <cstdint>
#include <functional>

#include "quillon/Export.h"

namespace quillon {

/// Calls back when the host begins to shut down, so that whoever waits need not ask an
/// IShutdownMonitor again and again. A host that has it registers it with ServiceLocator beside its
/// monitor, and both must tell the same. Without it the library looks at the monitor every 100 ms.
/// The operations are called on any thread.
///
/// @code
/// auto* const notifier = ServiceLocator::Get<IShutdownNotifier>(true);
/// const auto registration = notifier->OnShutdown([&] { wakeUp.Set(1); });
/// wakeUp.WaitForSignals();
/// notifier->ForgetCallback(registration);  // from here on wakeUp may go
/// @endcode
class QUILLON_API IShutdownNotifier {
public:
    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IShutdownNotifier"; }

    virtual ~IShutdownNotifier();

    /// Has `callback` called once, on any thread, when the host begins to shut down; when it does
    /// already, before this returns. The callback must be quick, must not throw, and must neither
    /// register nor forget one. Returns what ForgetCallback() takes.
    virtual std::uint64_t OnShutdown(std::function<void()> callback) = 0;
    /// Ends a registration: when this returns the callback neither runs nor will run. Unknown
    /// registrations are ignored.
    virtual void ForgetCallback(std::uint64_t registration) = 0;
};

}  // namespace quillon
