#include "host/Logging.h"

#include <cstdio>

#include "quillon/CLogger.h"

namespace quillon::agent {

namespace {

const char* LevelName(ICLogger::Level level) {
    static const char* const names[] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATAL"};
    return names[level];
}

/// One call, so that entries of several threads do not mix.
void WriteToStandardError(ICLogger::Level level, const std::string& text) {
    std::fprintf(stderr, "%-5s %s\n", LevelName(level), text.c_str());
}

}  // namespace

ICLogger* StartLogging(const LogSettings& settings) {
    if (settings.file.empty()) {
        ICLogger* const logger = CLogger::SetLoggingCallback(&WriteToStandardError);
        logger->SetLevel(settings.level.value_or(ICLogger::Level::Warn));
        return logger;
    }
    ICLogger* const logger = CLogger::GetInstance();
    logger->InitializeLogging(settings.file.c_str(), settings.level.value_or(ICLogger::Level::Info));
    return logger;
}

void EndLogging() {
    CLogger::GetInstance()->StopLogging();
    CLogger::ReleaseInstance();
}

}  // namespace quillon::agent
