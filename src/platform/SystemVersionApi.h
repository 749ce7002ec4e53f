#pragma once

#include <cstdint>

namespace quillon::platform {

struct SystemVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
};

/// Returns the version that the system reports to a program that does not declare which versions it
/// knows: Windows stops at 6.2. Elsewhere it is the kernel's release.
SystemVersion ReportedSystemVersion();

}  // namespace quillon::platform
