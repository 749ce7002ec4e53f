#pragma once

#include <cstdarg>
#include <functional>
#include <memory>
#include <string>

#include "quillon/Export.h"
#include "quillon/LoggerBase.h"

namespace quillon {

/// Logs for the whole process through log4cplus: every entry goes to standard output
/// and to a rolling log file (5,242,880 bytes, 5 backups, flushed at every
/// entry), in the pattern "%d{%Y-%m-%d %H:%M:%S.%q} [%5T] %-5p - %m%n". An entry that
/// cannot be written is counted (SelfMetrics.h) and never fails its caller. Messages
/// are cut at 9,999 characters. The file is never truncated unless it has been
/// renamed: a roll-over that fails is retried while entries go on being appended.
///
/// The slot behind GetInstance can hold a logger that hands entries to a host
/// callback instead. Pointers obtained earlier are invalid once the slot's
/// instance has been replaced or released; the host does so only while nobody logs.
class QUILLON_API CLogger : public LoggerBase {
public:
    using Callback = std::function<void(ICLogger::Level, const std::string&)>;

    /// Returns the slot's instance, which the slot owns; an empty slot is filled by a new, uninitialised
    /// CLogger. This and the next operations are thread-safe.
    static ICLogger* GetInstance();
    /// Returns whether the slot holds an instance, and makes none.
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
    /// Returns whether InitializeLogging() was called, and StopLogging() was not since then.
    bool IsInitialized() const override;
    /// Closes the file and ends log4cplus; entries are dropped until the next InitializeLogging().
    void StopLogging() override;

    /// Returns the path as it was given; empty without a file and after StopLogging().
    const std::string& GetPath() const override;
    /// Entries go to the new file from now on. An empty or unchanged path is
    /// refused with an entry and changes nothing.
    void SetPath(const std::string& path) override;
    /// Changes the level and returns the previous one; a logger that is not initialised keeps Info.
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
