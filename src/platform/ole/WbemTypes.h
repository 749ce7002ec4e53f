#pragma once

/// The interfaces and types of Windows Management Instrumentation: the system's headers on
/// Windows; elsewhere the part of them that the library uses.

#ifdef _WIN32
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <comdef.h>
#include <comutil.h>
#include <oleauto.h>
#include <wbemidl.h>
#else
#include "platform/ole/WbemTypesLinux.h"
#endif

#include "quillon/WindowsTypes.h"
