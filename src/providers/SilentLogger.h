#pragma once

#include "quillon/ICLogger.h"

namespace quillon {

/// Returns the logger, or one that writes nothing when it is null.
ICLogger& OrSilent(ICLogger* logger);

}  // namespace quillon
