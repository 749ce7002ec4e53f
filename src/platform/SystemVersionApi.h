#pragma once

#include <cstdint>

namespace quillon::platform {

struct SystemVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
};

/// What the system says of itself to a program that does not declare which
/// versions it knows: Windows stops at 6.2. The kernel's release elsewhere.
SystemVersion ReportedSystemVersion();

}  // namespace quillon::platform
