#pragma once

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// Lets every other user of the file go on.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

}  // namespace quillon::platform
