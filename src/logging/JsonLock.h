#pragma once

#include "logging/RenewableMutex.h"

namespace quillon {

/// Returns the one lock under which every JsonLinesLogger writes. It is never destroyed, and made anew where
/// the threads are gone. The lock of the process-wide output is taken before it, never after it; so that a
/// fork takes them in this order as well, this is called before the output installs its handlers.
RenewableMutex& TheJsonMutex();

}  // namespace quillon
