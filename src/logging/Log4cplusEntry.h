#pragma once

#include <log4cplus/loglevel.h>

#include <optional>
#include <string>

#include "quillon/ICLogger.h"

namespace quillon {

/// log4cplus's level of one of ours; nothing for a code outside the enumeration.
std::optional<log4cplus::LogLevel> ToLog4cplusLevel(ICLogger::Level level);
/// Our level of any of log4cplus's; its "not set" is Error.
ICLogger::Level FromLog4cplusLevel(log4cplus::LogLevel level);

/// Returns what log4cplus calls this thread. That is its number unless the host has named it, and without the
/// separators that a locale which the host has set for new streams puts between the digits. The text is
/// log4cplus's and lives as long as the thread.
const std::string& ThreadName();

}  // namespace quillon
