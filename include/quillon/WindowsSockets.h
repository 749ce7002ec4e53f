#pragma once

#include "quillon/Export.h"

namespace quillon {

/// Starts Windows Sockets 2.2 for the process. Thread-safe; a log entry is written with no lock held.
/// Outside Windows there is nothing to start, and starting succeeds.
///
/// @code
/// if (WindowsSockets::GetInstance()->InitializeSockets()) std::cout << "sockets may be used\n";
/// @endcode
class QUILLON_API WindowsSockets {
public:
    WindowsSockets(const WindowsSockets&) = delete;
    WindowsSockets& operator=(const WindowsSockets&) = delete;

    /// Returns the one instance, which lives as long as the process.
    static WindowsSockets* GetInstance();
    /// Starts sockets unless they are started, and returns whether they are. A failure logs the Error
    /// entry "WSAStartup failed", and the next call tries again.
    bool InitializeSockets();
    /// Ends what InitializeSockets() has started, by one WSACleanup; the next InitializeSockets() starts
    /// them again. Call it when no thread uses sockets.
    void ReleaseSockets();

private:
    WindowsSockets();
    ~WindowsSockets();

    static WindowsSockets* m_pUniqueInstance;
    bool m_initialized = false;
};

}  // namespace quillon
