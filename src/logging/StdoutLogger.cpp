#include "quillon/StdoutLogger.h"

#include <cstdio>

namespace quillon {

namespace {

const char* Prefix(ICLogger::Level level) {
    static constexpr const char* kPrefixes[] = {"TRACE ", "DEBUG ", "INFO ", "WARN ", "ERROR ", "FATAL "};
    return kPrefixes[level];
}

}  // namespace

StdoutLogger::StdoutLogger() : LoggerBase(Level::Warn) {}
StdoutLogger::~StdoutLogger() = default;

void StdoutLogger::Write(Level level, const char* format, std::va_list arguments) {
    std::fputs(Prefix(level), stdout);
    std::vprintf(format, arguments);
    std::fputc('\n', stdout);
}

}  // namespace quillon
