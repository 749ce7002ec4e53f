#pragma once

#include <array>
#include <cstdint>

namespace quillon::platform {

/// Of a release such as "6.1.0-18-amd64" the numbers 6, 1, 0 and 18; what is missing is 0.
std::array<std::uint32_t, 4> KernelRelease();

}  // namespace quillon::platform
