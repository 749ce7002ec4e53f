#pragma once

#include <cstdint>

namespace quillon::platform {

/// COM, by its own result codes: negative is a failure. Where there is none it is
/// simulated.

/// On the calling thread, multi-threaded; 1 when it was initialised already. Every
/// result of 0 or more is taken back by UninitializeCom().
std::int32_t InitializeCom();
void UninitializeCom();
/// For the process: default authentication, impersonation, no security descriptor.
std::int32_t InitializeComSecurity();

}  // namespace quillon::platform
