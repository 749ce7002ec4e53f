#pragma once

#include <optional>
#include <string>

#include "quillon/ICLogger.h"

namespace quillon::agent {

enum class LogFormat { Text, Json };
enum class SystemLog { None, Journal, EventLog };

struct LogSettings {
    std::string file;                       ///< UTF-8; empty: entries go to standard error only
    std::optional<ICLogger::Level> level;   ///< by default Info with a file, Warn without
    LogFormat format = LogFormat::Text;     ///< of the lines of the file
    SystemLog systemLog = SystemLog::None;  ///< gets every entry as well
};

/// Starts the loggers and returns the one that passes entries to all of them. Throws std::runtime_error,
/// which names the reason, when the file cannot be opened.
ICLogger* StartLogging(const LogSettings& settings);

/// Closes the log file and releases the process-wide logger.
void EndLogging() noexcept;

}  // namespace quillon::agent
