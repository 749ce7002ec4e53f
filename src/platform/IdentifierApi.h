#pragma once

#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// Fills `guid`, which has the machine's byte order, with a new random identifier
/// (RFC 4122, version 4). False when the system has none to give.
bool CreateIdentifier(GUID& guid);

}  // namespace quillon::platform
