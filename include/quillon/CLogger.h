#pragma once

#include <cstdarg>
#include <functional>
#include <memory>
#include <string>

#include "quillon/Export.h"
#include "quillon/LoggerBase.h"

namespace quillon {

/// The process-wide logger over log4cplus: every entry goes to standard output
/// and to a rolling log file (5,242,880 bytes, 5 backups, flushed at every
/// entry), in the pattern "%d{%Y-%m-%d %H:%M:%S.%q} [%5T] %-5p - %m%n". Messages
/// are cut at 9,999 characters. The file is never truncated unless it has been
/// renamed: a roll-over that fails is retried while entries go on being appended.
///
/// The slot behind GetInstance can hold a logger that hands entries to a host
/// callback instead. Pointers obtained earlier are invalid once the slot's
/// instance has been replaced or released; the host does so only while nobody logs.
class QUILLON_API CLogger : public LoggerBase {
public:
    using Callback = std::function<void(ICLogger::Level, const std::string&)>;

    /// The slot's instance; an empty slot gets a new, uninitialised CLogger.
    static ICLogger* GetInstance();
    static bool HaveInstance();
    /// Deletes the instance and empties the slot. It does not stop log4cplus:
    /// call StopLogging first when the log file is to be closed.
    static void ReleaseInstance();
    /// Replaces the instance by a logger, at Info, that calls `callback` on the
    /// logging thread with the formatted text (no prefix, no line end).
    static ICLogger* SetLoggingCallback(Callback callback);
    /// Replaces the instance by a new, uninitialised CLogger and returns it.
    static ICLogger* ClearLoggingCallback();

    /// Does nothing when already initialised. A file that cannot be opened is
    /// reported by log4cplus's own diagnostics; entries still reach standard output.
    void InitializeLogging(const char* path, Level level) override;
    bool IsInitialized() const override;
    void StopLogging() override;

    const std::string& GetPath() const override;
    /// Entries go to the new file from now on. An empty or unchanged path is
    /// refused with an entry and changes nothing.
    void SetPath(const std::string& path) override;
    /// Returns the previous level.
    Level SetLevel(Level level) override;
    Level GetLevel() override;

private:
    struct Impl;

    CLogger();
    ~CLogger() override;

    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);

    std::unique_ptr<Impl> m_impl;
};

}  // namespace quillon
