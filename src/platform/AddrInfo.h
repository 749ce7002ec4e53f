#pragma once

/// addrinfo, complete, with getaddrinfo() and freeaddrinfo(), which every system has.

#ifdef _WIN32
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <ws2tcpip.h>
#else
#include <netdb.h>
#include <sys/socket.h>
#endif
