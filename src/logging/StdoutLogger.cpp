#include "quillon/StdoutLogger.h"

#include <cstdio>
#include <utility>

#include "logging/LogOperations.h"

namespace quillon {

namespace {

const char* Prefix(ICLogger::Level level) {
    static constexpr const char* kPrefixes[] = {"TRACE ", "DEBUG ", "INFO ", "WARN ", "ERROR ", "FATAL "};
    return kPrefixes[level];
}

}  // namespace

StdoutLogger::~StdoutLogger() = default;

void StdoutLogger::InitializeLogging(const char*, Level level) { m_level = level; }
bool StdoutLogger::IsInitialized() const { return true; }
void StdoutLogger::StopLogging() {}
const std::string& StdoutLogger::GetPath() const { return NoLogPath(); }
void StdoutLogger::SetPath(const std::string&) {}
ICLogger::Level StdoutLogger::SetLevel(Level level) { return std::exchange(m_level, level); }
ICLogger::Level StdoutLogger::GetLevel() { return m_level; }

QUILLON_LOG_OPERATIONS(StdoutLogger, Write)

void StdoutLogger::Write(Level level, const char* format, std::va_list arguments) const {
    if (m_level > level) return;

    std::fputs(Prefix(level), stdout);
    std::vprintf(format, arguments);
    std::fputc('\n', stdout);
}

}  // namespace quillon
