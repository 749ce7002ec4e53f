#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Levels of ICLogger, in ascending severity. They live in a scope of their own
/// because every level is also the name of a logging operation.
struct LogLevels {
    enum Level : std::int32_t { Trace = 0, Debug = 1, Info = 2, Warn = 3, Error = 4, Fatal = 5 };
};

/// The one logging interface of the library and of the agent that loads it. The
/// object registered with ServiceLocator is "the registered logger". A logger
/// set to level L writes an entry of level M exactly when L <= M.
///
/// Formats are printf formats: text that is not the program's own goes through
/// "%s", or has its percent signs doubled first (StringUtils::ProtectPercents).
/// Entries may be written on any thread unless an implementation says otherwise;
/// the other operations belong to the host and do not overlap.
class QUILLON_API ICLogger {
public:
    using Level = LogLevels::Level;

    static const char* __InterfaceId() { return "VntItf_ICLogger"; }

    virtual ~ICLogger();

    /// `path` is the log file in UTF-8; null means no file.
    virtual void InitializeLogging(const char* path, Level level) = 0;
    virtual bool IsInitialized() const = 0;
    virtual void StopLogging() = 0;

    virtual void Trace(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Debug(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Info(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Warn(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Error(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;
    virtual void Fatal(const char* format, ...) QUILLON_PRINTF(2, 3) = 0;

    virtual void TraceV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void DebugV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void InfoV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void WarnV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void ErrorV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;
    virtual void FatalV(const char* format, std::va_list arguments) QUILLON_PRINTF(2, 0) = 0;

    /// The log file's path, empty when there is none.
    virtual const std::string& GetPath() const = 0;
    virtual void SetPath(const std::string& path) = 0;
    virtual Level SetLevel(Level level) = 0;
    virtual Level GetLevel() = 0;
};

}  // namespace quillon
