#pragma once

// The only way to <windows.h>: after winsock2, without its macros for min and max
// (the build defines NOMINMAX, WIN32_LEAN_AND_MEAN and the lowest system version).
#include <windows.h>
#include <winsock2.h>
