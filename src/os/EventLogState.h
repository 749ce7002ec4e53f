#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "platform/EventLogTypes.h"

namespace quillon {

/// What EventLogProxy keeps for the process's life.
struct EventLogState {
    std::mutex initialization;
    bool isInitialized = false;
    /// Set once `functions` is complete.
    std::atomic<bool> isAvailable = false;
    platform::EvtFunctions functions;

    std::mutex channelLock;
    /// Channels that the proxy switched on, by their name in upper case, and their holders.
    std::map<std::string, std::uint32_t> channels;

    /// Never destroyed: subscriptions may deliver while the process ends.
    static EventLogState& Get();
    /// For tests: lets the functions be bound anew, while nothing is held.
    void ForgetFunctions();
};

}  // namespace quillon
