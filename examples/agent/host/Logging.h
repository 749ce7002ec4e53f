#pragma once

#include <optional>
#include <string>

#include "quillon/ICLogger.h"

namespace quillon::agent {

struct LogSettings {
    std::string file;                      ///< UTF-8; empty: entries go to standard error only
    std::optional<ICLogger::Level> level;  ///< by default Info with a file, Warn without
};

/// Starts the process-wide logger.
ICLogger* StartLogging(const LogSettings& settings);

/// Closes the log file and releases the process-wide logger.
void EndLogging();

}  // namespace quillon::agent
