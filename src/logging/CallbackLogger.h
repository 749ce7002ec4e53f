#pragma once

#include <cstdarg>

#include "quillon/CLogger.h"
#include "quillon/LoggerBase.h"

namespace quillon {

/// Hands each entry, formatted, to a function of the host, on the thread that
/// logs and with no lock held. Starts at Info. With an empty function every entry
/// that the level lets through throws std::bad_function_call.
class CallbackLogger final : public LoggerBase {
public:
    explicit CallbackLogger(CLogger::Callback callback);
    ~CallbackLogger() override;

    /// Does nothing; the level stays.
    void InitializeLogging(const char* path, Level level) override;
    /// Sets the level and returns it, not the previous one.
    Level SetLevel(Level level) override;

private:
    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);

    CLogger::Callback m_callback;
};

}  // namespace quillon
