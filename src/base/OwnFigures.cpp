#include "base/OwnFigures.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace quillon::base {

namespace {

struct Cache {
    std::string name;
    std::function<std::uint64_t()> entries;
};

struct Register {
    std::mutex mutex;
    std::vector<Cache> caches;
};

/// Never destroyed: threads may ask while the process ends.
Register& TheRegister() {
    static Register& instance = *new Register;
    return instance;
}

std::atomic<std::uint64_t>& Dropped() {
    static std::atomic<std::uint64_t> count{0};
    return count;
}

std::atomic<std::int64_t>& Lookups() {
    static std::atomic<std::int64_t> count{0};
    return count;
}

std::atomic<std::int64_t>& CallsLeft() {
    static std::atomic<std::int64_t> count{0};
    return count;
}

}  // namespace

void CountDroppedLogLine() { Dropped().fetch_add(1, std::memory_order_relaxed); }

std::uint64_t DroppedLogLines() { return Dropped().load(std::memory_order_relaxed); }

LogFigures& TheLogFigures() {
    static constinit LogFigures figures;
    return figures;
}

void CountLookups(int change) { Lookups().fetch_add(change, std::memory_order_relaxed); }

std::int64_t LookupsUnderWay() { return Lookups().load(std::memory_order_relaxed); }

void CountWmiCallsLeft(int change) { CallsLeft().fetch_add(change, std::memory_order_relaxed); }

std::int64_t WmiCallsLeft() { return CallsLeft().load(std::memory_order_relaxed); }

void RegisterCache(const std::string& name, std::function<std::uint64_t()> entries) {
    Register& instance = TheRegister();
    const std::lock_guard lock(instance.mutex);
    instance.caches.push_back({name, std::move(entries)});
}

std::vector<CacheSize> CacheSizes() {
    std::vector<Cache> caches;
    {
        Register& instance = TheRegister();
        const std::lock_guard lock(instance.mutex);
        caches = instance.caches;
    }
    std::vector<CacheSize> sizes;
    for (const Cache& cache : caches) sizes.push_back({cache.name, cache.entries()});
    return sizes;
}

}  // namespace quillon::base
