#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "logging/LogOutput.h"
#include "quillon/ICLogger.h"

namespace quillon {

/// Marks the events that CLogger makes for appenders of the host (InternalLoggingEvent::getType()).
inline constexpr unsigned kOwnEvent = 7'001;

/// Connects the process-wide output with the root logger of log4cplus, for which it stands: the root's level
/// decides, what a host logs through log4cplus comes to the output, and what CLogger writes comes to the
/// appenders that a host has added. log4cplus is destroyed while the process ends, when threads may still
/// log; from then on it is left alone, and the output goes on.

/// Returns the process-wide output, which is never destroyed.
LogOutput& TheLogOutput();

/// Starts log4cplus, without threads of its own, and gives its root what its basic configuration would: the
/// level DEBUG and one appender, for standard output.
void ConfigureRoot();
/// Makes the root write to the file of that path. The new file is open before an old one is closed.
void InstallFile(const std::string& path);
/// Closes and removes every appender of every logger. No memory is needed for those of this library.
void ShutRootDown();

/// Returns the root's level in log4cplus's numbers, which lives as long as the process. A host may change it.
std::int32_t* RootLevel();
void SetRootLevel(std::int32_t level);
/// An entry on its way to the output and to the appenders that the host has added. While it lives, log4cplus
/// does, unless it has ended before.
class RootEntry {
public:
    explicit RootEntry(ICLogger::Level level);
    ~RootEntry();
    RootEntry(const RootEntry&) = delete;
    RootEntry& operator=(const RootEntry&) = delete;

    /// Whether log4cplus would pass it.
    [[nodiscard]] bool IsEnabled() const;
    void Write(std::string_view text) const;

private:
    const ICLogger::Level m_level;
    const bool m_isWithin;
};

/// Returns whether the process ends and log4cplus is, or will soon be, gone.
bool HasLog4cplusEnded();

}  // namespace quillon
