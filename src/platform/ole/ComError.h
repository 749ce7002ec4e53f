#pragma once

#include "platform/ole/WbemTypes.h"

namespace quillon::platform {

/// Throws what the system's own variant and text helpers throw, which outside Windows is
/// std::bad_alloc or std::runtime_error. On Windows it is a std::runtime_error too.
[[noreturn]] void RaiseComError(HRESULT code);

}  // namespace quillon::platform
