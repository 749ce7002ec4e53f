#pragma once

/// The types of WindowsTypes.h, complete: VARIANT, BSTR and their owners.

#ifdef _WIN32
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <comutil.h>
#include <oleauto.h>
#endif

#include "quillon/WindowsTypes.h"
