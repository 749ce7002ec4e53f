#pragma once

/// WbemBase: what an implementation of an interface of WMI begins with. The system's interfaces have more
/// members than the library uses.

#ifdef _WIN32
#include "platform/ole/WbemBaseWindows.h"
#else
#include "platform/ole/WbemTypes.h"

namespace quillon::platform {

template <class Interface>
using WbemBase = Interface;

}  // namespace quillon::platform
#endif
