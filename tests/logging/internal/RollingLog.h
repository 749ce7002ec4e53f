#pragma once

#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>

#include <functional>
#include <string>

#include "logging/CustomRollingFileAppender.h"
#include "support/System.h"

namespace quillon::test {

/// A log4cplus logger whose one appender is the rolling file, without any decoration.
class RollingLog {
public:
    explicit RollingLog(const std::string& path, std::function<void()> afterRollOver = {},
                        const char* pattern = "%m%n") {
        log4cplus::initialize();
        log4cplus::SharedAppenderPtr file(new CustomRollingFileAppender(path, std::move(afterRollOver)));
        file->setLayout(std::make_unique<log4cplus::PatternLayout>(pattern));
        logger.setAdditivity(false);
        logger.removeAllAppenders();
        logger.addAppender(file);
    }
    ~RollingLog() { logger.removeAllAppenders(); }
    RollingLog(const RollingLog&) = delete;
    RollingLog& operator=(const RollingLog&) = delete;

    void Write(const std::string& text) const { logger.log(log4cplus::INFO_LOG_LEVEL, text); }

    log4cplus::Logger logger = log4cplus::Logger::getInstance("RollingLog");
};

/// A line as it stands in the file.
inline std::string Line(const std::string& text) { return text + (kWindows ? "\r\n" : "\n"); }

}  // namespace quillon::test
