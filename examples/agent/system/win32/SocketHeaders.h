#pragma once

/// addrinfo, complete.

#include <winsock2.h>
// After <winsock2.h>:
#include <ws2tcpip.h>
