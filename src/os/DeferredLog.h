#pragma once

#include <string>
#include <utility>
#include <vector>

#include "quillon/StdoutLogger.h"

namespace quillon {

/// Keeps what is logged under a lock, whatever its level, for the time when the lock
/// is released: an entry may roll the log over, which takes locks of its own.
class DeferredLog final : public StdoutLogger {
public:
    ~DeferredLog() override;

    /// Hands the entries on, once; null drops them. Never throws.
    void WriteTo(ICLogger* logger) noexcept;

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

private:
    using Operation = void (ICLogger::*)(const char* format, ...);

    std::vector<std::pair<Operation, std::string>> m_entries;
};

/// The registered logger, null when there is none; that is not logged.
ICLogger* RegisteredLogger();

}  // namespace quillon
