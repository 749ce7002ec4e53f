#pragma once

#include "quillon/ICLogger.h"

namespace quillon {

/// The logger, or one that writes nothing up to Error when there is none.
ICLogger& OrSilent(ICLogger* logger);

}  // namespace quillon
