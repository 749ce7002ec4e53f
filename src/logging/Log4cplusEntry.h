#pragma once

#include <log4cplus/loglevel.h>

#include <optional>

#include "quillon/ICLogger.h"

namespace quillon {

/// log4cplus's level of one of ours; nothing for a code outside the enumeration.
std::optional<log4cplus::LogLevel> ToLog4cplusLevel(ICLogger::Level level);
/// Our level of any of log4cplus's; its "not set" is Error.
ICLogger::Level FromLog4cplusLevel(log4cplus::LogLevel level);

}  // namespace quillon
