#pragma once

#include <string>
#include <utility>
#include <vector>

#include "quillon/StdoutLogger.h"

namespace quillon {

/// Keeps the entries that are written while a lock is held, whatever their level, and hands them on when
/// the lock is released. The proxies work by the rule "one lock, log after": an entry may roll the log
/// over, the new file's banner asks the host's services, and one of these may call the proxy again on the
/// same thread, or wait for a thread that does.
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
