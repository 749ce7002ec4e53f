#pragma once

namespace quillon::agent {

/// The longest wait that a method offers: a day.
inline constexpr long long kLongestWait = 86'400;

/// Waits that long, less when the host shuts down.
void WaitSeconds(long long seconds);

}  // namespace quillon::agent
