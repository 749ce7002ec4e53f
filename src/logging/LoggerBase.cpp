#include "quillon/LoggerBase.h"

namespace quillon {

LoggerBase::LoggerBase(std::int32_t threshold) : m_threshold(threshold) {}
LoggerBase::~LoggerBase() = default;

void LoggerBase::InitializeLogging(const char*, Level level) { SetThreshold(level); }
bool LoggerBase::IsInitialized() const { return true; }
void LoggerBase::StopLogging() {}
void LoggerBase::SetPath(const std::string&) {}

const std::string& LoggerBase::GetPath() const {
    static const std::string& none = *new std::string;  // threads may ask while the process ends
    return none;
}

ICLogger::Level LoggerBase::SetLevel(Level level) {
    return static_cast<Level>(m_threshold.exchange(level, std::memory_order_acq_rel));
}

ICLogger::Level LoggerBase::GetLevel() { return static_cast<Level>(GetThreshold()); }
bool LoggerBase::IsEnabled(Level level) { return Passes(level); }

// A suppressed entry costs comparisons only: its arguments are not even looked at.
#define QUILLON_LEVEL_OPERATIONS(level)                                     \
    void LoggerBase::level(const char* format, ...) {                       \
        if (!Passes(Level::level)) return;                                  \
        std::va_list arguments;                                             \
        va_start(arguments, format);                                        \
        try {                                                               \
            Write(Level::level, format, arguments);                         \
        } catch (...) {                                                     \
            va_end(arguments);                                              \
            throw;                                                          \
        }                                                                   \
        va_end(arguments);                                                  \
    }                                                                       \
    void LoggerBase::level##V(const char* format, std::va_list arguments) { \
        if (Passes(Level::level)) Write(Level::level, format, arguments);   \
    }
QUILLON_LEVEL_OPERATIONS(Trace)
QUILLON_LEVEL_OPERATIONS(Debug)
QUILLON_LEVEL_OPERATIONS(Info)
QUILLON_LEVEL_OPERATIONS(Warn)
QUILLON_LEVEL_OPERATIONS(Error)
QUILLON_LEVEL_OPERATIONS(Fatal)
#undef QUILLON_LEVEL_OPERATIONS

}  // namespace quillon
