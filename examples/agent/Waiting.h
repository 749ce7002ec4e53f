#pragma once

#include "quillon/InvocationResult.h"

namespace quillon::agent {

/// Whether `seconds` is from 0 to a day; otherwise the result says code 2 and why.
bool CheckSeconds(long long seconds, InvocationResult& result);
/// Waits that long, less when the host shuts down.
void WaitSeconds(long long seconds);

}  // namespace quillon::agent
