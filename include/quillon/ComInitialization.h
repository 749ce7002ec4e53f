#pragma once

#include "quillon/Export.h"

namespace quillon {

/// Initialises COM on the calling thread, for the multi-threaded apartment (COINIT_MULTITHREADED), and
/// sets the process's security at impersonation level; from construction to destruction, which both
/// happen on that thread. A failure logs the Error entry "Could not initialize %s, failed with: %s" on
/// the registered logger, or writes it to standard error without one. Outside Windows, where no COM is
/// needed, everything succeeds. Prefer ComScope, which says whether it succeeded.
class QUILLON_API ComInitialization {
public:
    /// Calls Initialize(); the destructor takes back what succeeded.
    ComInitialization();
    virtual ~ComInitialization();
    ComInitialization(const ComInitialization&) = delete;
    ComInitialization& operator=(const ComInitialization&) = delete;

    /// Returns whether COM may be used, which is also so when it was initialised before. Each call that
    /// returns true must be followed by one Uninitialize() on the same thread.
    static bool Initialize();
    static void Uninitialize();

private:
    bool m_initialized;
};

}  // namespace quillon
