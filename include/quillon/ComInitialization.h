#pragma once

#include "quillon/Export.h"

namespace quillon {

/// COM on the calling thread, multi-threaded, with the process's security set at
/// impersonation level; from construction to destruction, which both happen on that
/// thread. A failure is logged at Error by the registered logger, else written to
/// standard error. Outside Windows, where no COM is needed, all of it succeeds.
class QUILLON_API ComInitialization {
public:
    ComInitialization();
    virtual ~ComInitialization();
    ComInitialization(const ComInitialization&) = delete;
    ComInitialization& operator=(const ComInitialization&) = delete;

    /// True when COM may be used: also when it was initialised before. Every call that
    /// returns true is one that Uninitialize() takes back.
    static bool Initialize();
    static void Uninitialize();

private:
    bool m_initialized;
};

}  // namespace quillon
