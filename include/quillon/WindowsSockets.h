#pragma once

#include "quillon/Export.h"

namespace quillon {

/// Windows Sockets 2.2, started once a process. Any thread. Outside Windows there is
/// nothing to start, and starting succeeds.
class QUILLON_API WindowsSockets {
public:
    WindowsSockets(const WindowsSockets&) = delete;
    WindowsSockets& operator=(const WindowsSockets&) = delete;

    /// Lives as long as the process.
    static WindowsSockets* GetInstance();
    /// Whether sockets are started; a failure is logged at Error, and the next call tries again.
    bool InitializeSockets();
    /// One clean-up; the next InitializeSockets() starts them again.
    void ReleaseSockets();

private:
    WindowsSockets();
    ~WindowsSockets();

    static WindowsSockets* m_pUniqueInstance;
    bool m_initialized = false;
};

}  // namespace quillon
