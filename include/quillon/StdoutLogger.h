#pragma once

#include <cstdarg>
#include <string>

#include "quillon/Export.h"
#include "quillon/ICLogger.h"

namespace quillon {

/// Writes entries to standard output as "LEVEL text", for tools and tests that
/// run without a log file. Starts at Warn. It has no lock: entries that are
/// written at once by several threads may interleave.
class QUILLON_API StdoutLogger : public ICLogger {
public:
    StdoutLogger() = default;
    ~StdoutLogger() override;

    /// Sets the level; the path is ignored.
    void InitializeLogging(const char* path, Level level) override;
    bool IsInitialized() const override;
    void StopLogging() override;

    void Trace(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Debug(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Info(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Warn(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Error(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Fatal(const char* format, ...) override QUILLON_PRINTF(2, 3);

    void TraceV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void DebugV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void InfoV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void WarnV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void ErrorV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void FatalV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);

    /// Always empty.
    const std::string& GetPath() const override;
    void SetPath(const std::string& path) override;
    /// Returns the previous level.
    Level SetLevel(Level level) override;
    Level GetLevel() override;

private:
    void Write(Level level, const char* format, std::va_list arguments) const QUILLON_PRINTF(3, 0);

    Level m_level = Level::Warn;
};

}  // namespace quillon
