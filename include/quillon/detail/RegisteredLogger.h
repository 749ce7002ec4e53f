#pragma once

#include "quillon/ICLogger.h"
#include "quillon/ServiceLocator.h"

namespace quillon::detail {

// How the library itself finds the registered logger. Both return null when there is none. Thread-safe while
// the host does not change its registrations.

/// Returns the registered logger. A missing one is the host's mistake, which the registry reports on
/// standard error.
inline ICLogger* RegisteredLogger() { return ServiceLocator::Get<ICLogger>(); }

/// Returns the same without a report, for code that may run before the host registers a logger or after it
/// has removed it.
inline ICLogger* RegisteredLoggerIfAny() { return ServiceLocator::Get<ICLogger>(true); }

}  // namespace quillon::detail
