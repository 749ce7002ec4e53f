#include "quillon/StdoutLogger.h"

#include <cstdio>
#include <new>

#include "base/PrintfFormat.h"

namespace quillon {

namespace {

const char* Prefix(ICLogger::Level level) {
    static constexpr const char* kPrefixes[] = {"TRACE ", "DEBUG ", "INFO ", "WARN ", "ERROR ", "FATAL "};
    return kPrefixes[level];
}

void WriteText(const char* format, std::va_list arguments) {
    try {
        if (base::FormatTo(stdout, format, arguments)) return;
        std::fputs("Invalid Log format: ", stdout);
        std::fputs(format, stdout);
    } catch (const std::bad_alloc&) {
        std::fputs(format, stdout);  // it still tells which entry it is
    }
}

}  // namespace

StdoutLogger::StdoutLogger() : LoggerBase(Level::Warn) {}
StdoutLogger::~StdoutLogger() = default;

void StdoutLogger::Write(Level level, const char* format, std::va_list arguments) {
    std::fputs(Prefix(level), stdout);
    WriteText(format, arguments);
    std::fputc('\n', stdout);
}

}  // namespace quillon
