#include "host/Logging.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include "quillon/CLogger.h"
#include "quillon/JsonLinesLogger.h"
#include "quillon/SystemLoggers.h"
#include "quillon/TeeLogger.h"
#include "system/LogFile.h"

namespace quillon::agent {

namespace {

constexpr const char* kName = "quillon-agent";

const char* LevelName(ICLogger::Level level) {
    static const char* const names[] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATAL"};
    return names[level];
}

/// One call, so that entries of several threads do not mix.
void WriteToStandardError(ICLogger::Level level, const std::string& text) {
    std::fprintf(stderr, "%-5s %s\n", LevelName(level), text.c_str());
}

/// The loggers besides the process-wide one. Never destroyed: a thread may log while the process ends.
struct Loggers {
    std::unique_ptr<ICLogger> json, systemLog, tee;
};

Loggers& TheLoggers() {
    static Loggers& loggers = *new Loggers;
    return loggers;
}

/// A log that cannot be written ends the agent before it does anything.
void CheckFile(const std::string& file) {
    const std::string fault = FaultOfLogFile(file);
    if (!fault.empty()) throw std::runtime_error("Cannot open the log '" + file + "': " + fault);
}

ICLogger* StartFileLog(const LogSettings& settings, ICLogger::Level level) {
    CheckFile(settings.file);
    if (settings.format == LogFormat::Text) {
        CLogger::GetInstance()->InitializeLogging(settings.file.c_str(), level);
        return CLogger::GetInstance();
    }
    TheLoggers().json = std::make_unique<JsonLinesLogger>();
    TheLoggers().json->InitializeLogging(settings.file.c_str(), level);
    return TheLoggers().json.get();
}

ICLogger* StartErrorLog(ICLogger::Level level) {
    ICLogger* const logger = CLogger::SetLoggingCallback(&WriteToStandardError);
    logger->SetLevel(level);
    return logger;
}

std::unique_ptr<ICLogger> MakeSystemLog(SystemLog log) {
    if (log == SystemLog::Journal) return std::make_unique<JournalLogger>(kName);
    return std::make_unique<EventLogLogger>(kName);
}

}  // namespace

ICLogger* StartLogging(const LogSettings& settings) {
    Loggers& loggers = TheLoggers();  // there before its end needs it
    const bool hasFile = !settings.file.empty();
    const auto level = settings.level.value_or(hasFile ? ICLogger::Level::Info : ICLogger::Level::Warn);
    ICLogger* const logger = hasFile ? StartFileLog(settings, level) : StartErrorLog(level);
    if (settings.systemLog == SystemLog::None) return logger;
    loggers.systemLog = MakeSystemLog(settings.systemLog);
    loggers.systemLog->SetLevel(level);
    loggers.tee = std::make_unique<TeeLogger>(std::vector<ICLogger*>{logger, loggers.systemLog.get()});
    return loggers.tee.get();
}

/// The end is reached without memory as well.
void EndLogging() noexcept {
    try {
        if (CLogger::HaveInstance()) CLogger::GetInstance()->StopLogging();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillon-agent: The log cannot be closed: %s\n", error.what());
    }
    CLogger::ReleaseInstance();
    TheLoggers() = {};
}

}  // namespace quillon::agent
