#pragma once

#include <string>
#include <thread>

#include "quillon/Export.h"

namespace quillon {

/// Threads as debuggers and the system know them.
class QUILLON_API ThreadUtils {
public:
    ThreadUtils() = delete;

    /// Names the current thread "Vantora-NAME" for whoever looks at it from outside;
    /// an empty name changes nothing. The system may cut it (Linux: 15 bytes).
    static void SetThreadName(const std::string& name);
    /// Does nothing: another thread cannot be named.
    static void SetThreadName(const std::thread& thread, const std::string& name);
    /// The system's id of the current thread.
    static unsigned long GetThreadId();
    /// Returns at once for 0 or less.
    static void ThreadSleepMs(long long ms);
};

}  // namespace quillon
