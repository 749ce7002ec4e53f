#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quillon::base {

/// Figures that parts of the library keep of themselves, for whoever reports what the
/// process costs. Thread-safe.

/// Counts a log entry that could not be written.
void CountDroppedLogLine();
std::uint64_t DroppedLogLines();

/// What became of the log besides.
struct LogFigures {
    std::atomic<std::uint64_t> bytes{0};                ///< written to log files
    std::atomic<std::uint64_t> refusedRollOvers{0};     ///< attempts at moving a full file aside that failed
    std::atomic<std::uint64_t> droppedConsoleLines{0};  ///< copies that nobody took in time
    std::atomic<std::uint32_t> lastError{0};            ///< of the log file, a system's code; 0: none yet
};
LogFigures& TheLogFigures();

/// Counts a look-up of a name that begins (1) or ends (-1) in the background.
void CountLookups(int change);
std::int64_t LookupsUnderWay();

/// Counts a call of WMI that is left behind (1), as it did not end in time, or ends after that (-1).
void CountWmiCallsLeft(int change);
std::int64_t WmiCallsLeft();

struct CacheSize {
    std::string name;
    std::uint64_t entries = 0;
};

/// Adds a cache to CacheSizes(), once, when it comes into being. `entries` is called on
/// any thread, with no lock held, until the process ends.
void RegisterCache(const std::string& name, std::function<std::uint64_t()> entries);
std::vector<CacheSize> CacheSizes();

}  // namespace quillon::base
