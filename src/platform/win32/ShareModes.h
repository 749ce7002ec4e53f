#pragma once

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// Whoever has the file open may go on with what they do.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

}  // namespace quillon::platform
