#pragma once

#include <log4cplus/fileappender.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/Handle.h"

namespace quillon {

/// The rolling log file: 5,242,880 bytes, 5 backups, every entry written through
/// to the system, missing directories made. It takes its limits and its place among
/// log4cplus's appenders from its base, but writes to a file handle of its own:
/// the base's stream goes through the ANSI code page, can be inherited by children,
/// asks for its position twice an entry and is truncated when a rename fails.
///
/// No line is lost to a roll-over: a file that cannot be moved aside is appended
/// to, and moved once it has grown some more. A write that fails loses its entry
/// only: the next one opens the file anew and starts on a line of its own.
class CustomRollingFileAppender final : public log4cplus::RollingFileAppender {
public:
    /// `afterRollOver` may be empty. It runs on the thread whose entry was too much,
    /// before that thread's next entry, inside log4cplus's re-entrant locks: what it
    /// logs comes first in the new file and never rolls it over again, however long
    /// it is. It must not wait for a lock under which another thread logs. What it
    /// throws is dropped.
    CustomRollingFileAppender(const std::string& path, std::function<void()> afterRollOver);
    ~CustomRollingFileAppender() override;

    void close() override;

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override;

private:
    bool IsRollOverDue() const;
    void RollOver();
    void ReportRollOver();
    bool Open();
    bool IsOpenAgain();
    void Write(std::string_view line);
    bool IsWritten(std::string_view line);
    bool Append(std::string_view text);

    platform::FileHandle m_file;
    std::uint64_t m_size = 0;    ///< of the file, counted by what is written
    std::uint64_t m_rollOverAt;  ///< the size past which the file is moved aside
    bool m_isLineTorn = false;   ///< the file ends in a part of a line
    bool m_isReportDue = false;  ///< the file is new and its report not yet written
    bool m_isReporting = false;
    std::chrono::steady_clock::time_point m_openAgainAt;
    std::function<void()> m_afterRollOver;
};

}  // namespace quillon
