#pragma once

#include <cstdarg>
#include <string>

#include "quillon/CLogger.h"
#include "quillon/ICLogger.h"

namespace quillon {

/// Hands each entry, formatted, to a function of the host, on the thread that
/// logs and with no lock held. Starts at Info. With an empty function every entry
/// that the level lets through throws std::bad_function_call.
class CallbackLogger final : public ICLogger {
public:
    explicit CallbackLogger(CLogger::Callback callback);
    ~CallbackLogger() override;

    /// Does nothing; the level stays.
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
    /// Returns the level just set.
    Level SetLevel(Level level) override;
    Level GetLevel() override;

private:
    void Write(Level level, const char* format, std::va_list arguments) const QUILLON_PRINTF(3, 0);

    CLogger::Callback m_callback;
    Level m_level = Level::Info;
};

}  // namespace quillon
