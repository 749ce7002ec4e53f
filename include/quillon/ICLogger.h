#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Names the levels of ICLogger, in ascending severity. They have a scope of their own because every
/// level is also the name of a logging operation.
struct LogLevels {
    enum Level : std::int32_t { Trace = 0, Debug = 1, Info = 2, Warn = 3, Error = 4, Fatal = 5 };
};

/// Writes log entries for the library and for the agent that loads it. The object that the host has
/// registered with ServiceLocator is "the registered logger". A logger at level L writes an entry of
/// level M exactly when L <= M. Texts are UTF-8.
///
/// The logging operations may be called on any thread unless an implementation says otherwise, and also
/// by a host's service that the library asks while it logs; the other operations belong to the host,
/// which calls one at a time. A host writes a logger of its own by deriving from LoggerBase.
///
/// Formats are printf formats. Text that is not the program's own is an argument for "%s", or has its
/// percent signs doubled first (StringUtils::ProtectPercents); it is never the format.
///
/// @code
/// void Report(ICLogger& logger, const std::string& path, int files) {
///     logger.Info("Found %d files in '%s'", files, path.c_str());
/// }
/// @endcode
class QUILLON_API ICLogger {
public:
    using Level = LogLevels::Level;

    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_ICLogger"; }

    virtual ~ICLogger();

    /// Starts logging at that level, into the file of that path; null means no file.
    virtual void InitializeLogging(const char* path, Level level) = 0;
    /// Returns whether entries are written.
    virtual bool IsInitialized() const = 0;
    /// Ends logging and closes the file.
    virtual void StopLogging() = 0;

    /// Write an entry of the level of the name: one formatted text, to which the logger adds what its
    /// form of a line has, the line end included.
    virtual void Trace(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Debug(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Info(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Warn(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Error(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Fatal(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;

    /// Write an entry from arguments that the caller has started; they must not be read afterwards.
    virtual void TraceV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void DebugV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void InfoV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void WarnV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void ErrorV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void FatalV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;

    /// Returns the path of the log file, empty when there is none; the reference is valid until the path
    /// changes.
    virtual const std::string& GetPath() const = 0;
    /// Changes to another log file.
    virtual void SetPath(const std::string& path) = 0;
    /// Changes the level and returns the previous one.
    virtual Level SetLevel(Level level) = 0;
    /// Returns the level.
    virtual Level GetLevel() = 0;

    /// Returns whether an entry of that level would be written, for whoever spares itself the work of
    /// making its arguments. Not virtual, so that it works with the logger of an older host as well.
    bool IsEnabled(Level level) { return IsInitialized() && GetLevel() <= level; }
};

}  // namespace quillon
