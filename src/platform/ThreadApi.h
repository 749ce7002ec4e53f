#pragma once

#include <cstdint>
#include <string>

namespace quillon::platform {

/// Names the current thread for debuggers and tools; the system may cut the name.
void NameThread(const std::string& name);
/// The system's identifier of the current thread.
std::uint32_t CurrentThreadId();

}  // namespace quillon::platform
