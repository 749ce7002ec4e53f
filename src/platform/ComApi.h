#pragma once

#include <cstdint>

namespace quillon::platform {

/// COM, by its own result codes: negative is a failure. Where there is none it is
/// simulated.

/// Initialises COM on the calling thread for the multi-threaded apartment; 1 (S_FALSE) when it was
/// initialised already. Every result of 0 or more must be taken back by UninitializeCom().
std::int32_t InitializeCom();
void UninitializeCom();
/// Sets the security of the process: default authentication, impersonation, no security descriptor.
std::int32_t InitializeComSecurity();

}  // namespace quillon::platform
