#pragma once

#include <cstdarg>
#include <string>
#include <utility>
#include <vector>

#include "quillon/LoggerBase.h"

namespace quillon {

/// Keeps the entries that are written while a lock is held, whatever their level, and hands them on when
/// the lock is released. The proxies work by the rule "one lock, log after": an entry may roll the log
/// over, the new file's banner asks the host's services, and one of these may call the proxy again on the
/// same thread, or wait for a thread that does.
class DeferredLog final : public LoggerBase {
public:
    DeferredLog() : LoggerBase(Level::Trace) {}
    ~DeferredLog() override;

    /// Hands the entries on, once; null drops them. Never throws.
    void WriteTo(ICLogger* logger) noexcept;

private:
    void Write(Level level, const char* format, std::va_list arguments) override QUILLON_PRINTF(3, 0);

    std::vector<std::pair<Level, std::string>> m_entries;
};

}  // namespace quillon
