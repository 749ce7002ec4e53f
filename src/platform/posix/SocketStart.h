#pragma once

#include <cstdint>

namespace quillon::platform {

constexpr std::uint32_t kSocketsNotStarted = 10093;  // WSANOTINITIALISED

/// Returns whether StartSockets() was called more often than StopSockets(): the calls that Windows refuses
/// otherwise are refused here as well. The last error says so.
bool AreSocketsStarted();

}  // namespace quillon::platform
