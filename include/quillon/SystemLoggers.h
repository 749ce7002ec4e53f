#pragma once

#include <cstdarg>
#include <string>

#include "quillon/Export.h"
#include "quillon/LoggerBase.h"

namespace quillon {

/// Sends entries to the journal of systemd by its native protocol: the fields MESSAGE, PRIORITY (3 for Error
/// and 2 for Fatal, 4 to 7 downwards), SYSLOG_IDENTIFIER and TID. It never waits; an entry that is not taken
/// at once, or that there is no journal for, is counted as lost (SelfMetrics.h).
class QUILLON_API JournalLogger : public LoggerBase {
public:
    /// Starts at Info. `socket` is a native path.
    explicit JournalLogger(std::string identifier, std::string socket = "/run/systemd/journal/socket");
    ~JournalLogger() override;

private:
    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);

    std::string m_identifier, m_socket;
};

/// Writes entries to the log "Application" of the Windows event log, under a source that the host may have
/// registered: Error and Fatal as errors, Warn as warnings, all else as information. An entry that is not
/// taken is counted as lost, as all are on Linux.
class QUILLON_API EventLogLogger : public LoggerBase {
public:
    /// Starts at Info.
    explicit EventLogLogger(std::string source);
    ~EventLogLogger() override;

private:
    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);

    std::string m_source;
};

}  // namespace quillon
