#pragma once

#include <cstdint>

namespace quillon::platform {

/// The Windows code that says what an errno value says.
std::uint32_t WindowsCode(int errnoValue);
/// Records errno as the thread's last error; false, so that a failing function can return it.
bool FailWithErrno();

}  // namespace quillon::platform
