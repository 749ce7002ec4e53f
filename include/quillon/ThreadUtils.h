#pragma once

#include <string>
#include <thread>

#include "quillon/Export.h"

namespace quillon {

/// Names and identifies threads as debuggers and the system know them. Every operation is
/// thread-safe; nothing is logged.
///
/// @code
/// std::thread worker([] {
///     ThreadUtils::SetThreadName("Collector");  // "Vantora-Collector"
///     ThreadUtils::ThreadSleepMs(50);
/// });
/// worker.join();
/// @endcode
class QUILLON_API ThreadUtils {
public:
    ThreadUtils() = delete;

    /// Names the current thread "Vantora-NAME", at most 127 bytes, for whoever looks at it from
    /// outside: on Windows for a debugger that is attached, on Linux for the system, which
    /// keeps 15 bytes. An empty name changes nothing. A failure is not reported.
    static void SetThreadName(const std::string& name);
    /// Does nothing: the system lets a thread only name itself. Call the other form from the
    /// thread's own function.
    static void SetThreadName(const std::thread& thread, const std::string& name);
    /// Returns the system's number of the current thread, as logs and debuggers show it; it may
    /// be given to another thread after this one has ended.
    static unsigned long GetThreadId();
    /// Blocks the calling thread for `ms` milliseconds; returns at once for 0 or less.
    static void ThreadSleepMs(long long ms);
};

}  // namespace quillon
