#pragma once

/// addrinfo, complete.

#include <netdb.h>
