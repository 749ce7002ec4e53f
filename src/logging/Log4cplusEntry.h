#pragma once

#include <log4cplus/logger.h>

#include <optional>
#include <string>

#include "quillon/ICLogger.h"

namespace quillon {

/// log4cplus's level of one of ours; nothing for a code outside the enumeration.
std::optional<log4cplus::LogLevel> ToLog4cplusLevel(ICLogger::Level level);
/// Our level of any of log4cplus's; its "not set" is Error.
ICLogger::Level FromLog4cplusLevel(log4cplus::LogLevel level);

/// Passes a formatted text to log4cplus. An unexpected level code becomes an
/// entry of its own at ERROR, and so does the text.
void WriteEntry(const log4cplus::Logger& logger, ICLogger::Level level, const std::string& text);

}  // namespace quillon
