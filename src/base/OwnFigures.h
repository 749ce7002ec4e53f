#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quillon::base {

/// Figures that parts of the library keep of themselves, for whoever reports what the
/// process costs. Thread-safe.

/// A log entry could not be written.
void CountDroppedLogLine();
std::uint64_t DroppedLogLines();

/// A look-up of a name begins (1) or ends (-1) in the background.
void CountLookups(int change);
std::int64_t LookupsUnderWay();

/// A call of WMI is left behind (1), because it did not come to an end in time, or ends after that (-1).
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
