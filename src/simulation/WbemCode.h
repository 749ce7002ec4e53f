#pragma once

#include "platform/Wbem.h"

namespace quillon::simulation {

/// One type on both systems: the system's own enumeration is unsigned.
constexpr HRESULT Code(WBEMSTATUS status) { return static_cast<HRESULT>(status); }

}  // namespace quillon::simulation
