#pragma once

#include <chrono>
#include <cstddef>

#include "platform/ResolverApi.h"

namespace quillon {

/// Look-ups in the background, for those who wait only so long. Who asks the same while one is
/// under way shares it. Any thread; nothing is logged.
struct LookupResult {
    enum class End {
        Answered,
        TimedOut,    ///< the look-up goes on alone
        NotStarted,  ///< no place was free before the deadline
    };

    End end = End::Answered;
    int code = 0;
    /// The receiver's, for FreeAddresses().
    addrinfo* list = nullptr;
};

/// How many may run at once; who asks for more waits for a place. A look-up that nobody waits for
/// any more gives its place back, and counts among all; addresses in figures and "localhost",
/// which no server is asked for, need no place.
struct LookupLimits {
    std::size_t awaited = 16;
    std::size_t all = 256;
};
void SetLookupLimits(const LookupLimits& limits);

LookupResult LookUp(const platform::AddressQuery& query, std::chrono::steady_clock::time_point deadline);

}  // namespace quillon
