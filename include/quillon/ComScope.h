#pragma once

#include <thread>

#include "quillon/ComInitialization.h"
#include "quillon/Export.h"

namespace quillon {

/// Initialises COM, as ComInitialization does, for a block. It must end on the thread on which it began:
/// ending elsewhere logs one Fatal entry on the registered logger and leaves COM initialised.
///
/// @code
/// const ComScope com;
/// if (com) std::cout << "WMI may be used on this thread\n";
/// @endcode
class QUILLON_API ComScope {
public:
    /// Initialises COM on this thread; a failure is logged as ComInitialization says.
    ComScope();
    ~ComScope();
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

    /// Returns whether COM may be used.
    explicit operator bool() const { return m_initialized; }

private:
    std::thread::id m_thread;
    bool m_initialized;
};

}  // namespace quillon
