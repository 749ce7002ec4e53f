#pragma once

#include <cstdint>

#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// Fills `guid`, which has the machine's byte order, with a new random identifier
/// (RFC 4122, version 4). False when the system has none to give.
bool CreateIdentifier(GUID& guid);
/// Returns 64 random bits, at a lower price than the C++ library's device; 0 when the system has none to
/// give.
std::uint64_t RandomBits();

}  // namespace quillon::platform
