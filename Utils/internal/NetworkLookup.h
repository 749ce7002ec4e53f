#pragma once

#include <chrono>
#include <optional>

#include "platform/ResolverApi.h"

namespace quillon {

/// Look-ups in the background, for those who wait only so long. Who asks the same
/// while one is under way shares it; there are at most kMostLookups, and who asks for
/// more waits for a place. Any thread; nothing is logged.
struct LookupResult {
    int code = 0;
    /// The receiver's, for FreeAddresses(); a copy when others receive the same.
    addrinfo* list = nullptr;
    bool isCopy = false;
};

inline constexpr std::size_t kMostLookups = 16;

/// Nothing when the deadline passes first: the look-up then goes on alone.
std::optional<LookupResult> LookUp(const platform::AddressQuery& query,
                                   std::chrono::steady_clock::time_point deadline);

}  // namespace quillon
