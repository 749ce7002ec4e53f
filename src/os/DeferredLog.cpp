#include "os/DeferredLog.h"

#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"

namespace quillon {

DeferredLog::~DeferredLog() = default;

void DeferredLog::WriteTo(ICLogger* logger) noexcept {
    const auto entries = std::exchange(m_entries, {});
    if (logger == nullptr) return;
    try {
        for (const auto& [operation, text] : entries) (logger->*operation)("%s", text.c_str());
    } catch (...) {  // the host's own logger; the operation is done whatever becomes of its report
    }
}

#define QUILLON_DEFER(level)                                                              \
    void DeferredLog::level(const char* format, ...) {                                    \
        std::va_list arguments;                                                           \
        va_start(arguments, format);                                                      \
        level##V(format, arguments);                                                      \
        va_end(arguments);                                                                \
    }                                                                                     \
    void DeferredLog::level##V(const char* format, std::va_list arguments) {              \
        m_entries.emplace_back(&ICLogger::level, StringUtils::Format(format, arguments)); \
    }
QUILLON_DEFER(Trace)
QUILLON_DEFER(Debug)
QUILLON_DEFER(Info)
QUILLON_DEFER(Warn)
QUILLON_DEFER(Error)
QUILLON_DEFER(Fatal)
#undef QUILLON_DEFER

ICLogger* RegisteredLogger() { return ServiceLocator::Get<ICLogger>(true); }

}  // namespace quillon
