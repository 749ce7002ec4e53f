#pragma once

// The only way to <windows.h>: without winsock 1 and the macros for min and max (the
// build defines WIN32_LEAN_AND_MEAN, NOMINMAX and the lowest system version).
#include <windows.h>
#include <winsock2.h>
