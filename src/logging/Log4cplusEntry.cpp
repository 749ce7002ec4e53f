#include "logging/Log4cplusEntry.h"

#include <log4cplus/thread/threads.h>

#include <algorithm>

#include "base/Characters.h"
#include "platform/ThreadApi.h"

namespace quillon {

std::optional<log4cplus::LogLevel> ToLog4cplusLevel(ICLogger::Level level) {
    switch (level) {
        case ICLogger::Level::Trace:
            return log4cplus::TRACE_LOG_LEVEL;
        case ICLogger::Level::Debug:
            return log4cplus::DEBUG_LOG_LEVEL;
        case ICLogger::Level::Info:
            return log4cplus::INFO_LOG_LEVEL;
        case ICLogger::Level::Warn:
            return log4cplus::WARN_LOG_LEVEL;
        case ICLogger::Level::Error:
            return log4cplus::ERROR_LOG_LEVEL;
        case ICLogger::Level::Fatal:
            return log4cplus::FATAL_LOG_LEVEL;
    }
    return std::nullopt;
}

ICLogger::Level FromLog4cplusLevel(log4cplus::LogLevel level) {
    if (level >= log4cplus::FATAL_LOG_LEVEL) return ICLogger::Level::Fatal;
    if (level >= log4cplus::ERROR_LOG_LEVEL || level == log4cplus::NOT_SET_LOG_LEVEL)
        return ICLogger::Level::Error;
    if (level >= log4cplus::WARN_LOG_LEVEL) return ICLogger::Level::Warn;
    if (level >= log4cplus::INFO_LOG_LEVEL) return ICLogger::Level::Info;
    if (level >= log4cplus::DEBUG_LOG_LEVEL) return ICLogger::Level::Debug;
    return ICLogger::Level::Trace;
}

const std::string& ThreadName() {
    const std::string& name = log4cplus::thread::getCurrentThreadName2();
    const auto isDigit = base::IsDigit<char>;
    if (name.empty() || !isDigit(name.front()) || std::all_of(name.begin(), name.end(), isDigit)) return name;
    std::string digits = name;
    std::erase_if(digits, [isDigit](char c) { return !isDigit(c); });
    if (digits == std::to_string(platform::CurrentThreadId()))
        log4cplus::thread::setCurrentThreadName2(digits);
    return log4cplus::thread::getCurrentThreadName2();
}

}  // namespace quillon
