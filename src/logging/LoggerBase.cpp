#include "quillon/LoggerBase.h"

#include <algorithm>

namespace quillon {

namespace {

/// A level outside the enumeration gives at least one on its side of all severities.
std::int32_t SeverityOf(std::int32_t level, std::int32_t severitiesALevel) {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    return std::clamp(level, -kMost / severitiesALevel, kMost / severitiesALevel) * severitiesALevel;
}

/// A null format is a mistake of the caller that must not end the process; the entry is empty.
const char* FormatOrEmpty(const char* format) { return format != nullptr ? format : ""; }

}  // namespace

LoggerBase::LoggerBase(std::int32_t threshold)
    : m_threshold(threshold), m_ownLowest(SeverityOf(threshold, kSeveritiesALevel)) {}
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
    const Level previous = GetLevel();
    SetThreshold(level);
    return previous;
}

ICLogger::Level LoggerBase::GetLevel() { return static_cast<Level>(GetThreshold()); }

void LoggerBase::SetThreshold(std::int32_t threshold) {
    m_threshold.store(threshold, std::memory_order_release);
    std::atomic_ref(m_ownLowest).store(SeverityOf(threshold, kSeveritiesALevel), std::memory_order_release);
}

void LoggerBase::FollowSeverity(std::int32_t* lowest) {
    m_lowest.store(lowest == nullptr ? &m_ownLowest : lowest, std::memory_order_release);
}

// A suppressed entry costs a comparison: its arguments are not even looked at.
#define QUILLON_LEVEL_OPERATIONS(level)                                                  \
    void LoggerBase::level(const char* format, ...) {                                    \
        if (!Passes(Level::level)) return;                                               \
        std::va_list arguments;                                                          \
        va_start(arguments, format);                                                     \
        try {                                                                            \
            Write(Level::level, FormatOrEmpty(format), arguments);                       \
        } catch (...) {                                                                  \
            va_end(arguments);                                                           \
            throw;                                                                       \
        }                                                                                \
        va_end(arguments);                                                               \
    }                                                                                    \
    void LoggerBase::level##V(const char* format, std::va_list arguments) {              \
        if (Passes(Level::level)) Write(Level::level, FormatOrEmpty(format), arguments); \
    }
QUILLON_LEVEL_OPERATIONS(Trace)
QUILLON_LEVEL_OPERATIONS(Debug)
QUILLON_LEVEL_OPERATIONS(Info)
QUILLON_LEVEL_OPERATIONS(Warn)
QUILLON_LEVEL_OPERATIONS(Error)
QUILLON_LEVEL_OPERATIONS(Fatal)
#undef QUILLON_LEVEL_OPERATIONS

}  // namespace quillon
