#pragma once

#include <array>
#include <cstdint>

namespace quillon::platform {

/// Returns the numbers of the kernel's release: 6, 1, 0 and 18 for "6.1.0-18-amd64"; a missing one is 0.
std::array<std::uint32_t, 4> KernelRelease();

}  // namespace quillon::platform
