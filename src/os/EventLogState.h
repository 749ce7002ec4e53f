#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "platform/EventLogTypes.h"

namespace quillon {

/// Holds the state of EventLogProxy for the life of the process. The two locks are never held together.
struct EventLogState {
    std::mutex initialization;
    bool isInitialized = false;
    /// True once `functions` is complete, which is read without a lock from then on.
    std::atomic<bool> isAvailable = false;
    platform::EvtFunctions functions;

    std::mutex channelLock;
    /// Counts the holders of each channel that the proxy has enabled, by its name in upper case.
    std::map<std::string, std::uint32_t> channels;

    /// Never destroyed: subscriptions may deliver while the process ends.
    static EventLogState& Get();
    /// Lets a test bind the functions anew, while nothing is held.
    void ForgetFunctions();
};

}  // namespace quillon
