#pragma once

#include <log4cplus/appender.h>

#include <memory>
#include <string>

#include "logging/LogOutput.h"

namespace quillon {

/// Bring what a host logs through log4cplus itself to a LogOutput. CLogger's own entries go there directly,
/// and pass log4cplus only for the sake of appenders of the host (see Log4cplusRoot.h).
///
/// The file appender does not use log4cplus's stream, which goes through the ANSI code page, can be inherited
/// by children, asks for its position twice an entry and is truncated when a rename fails.
class OutputAppender : public log4cplus::Appender {
protected:
    explicit OutputAppender(std::shared_ptr<LogOutput> output);

    void append(const log4cplus::spi::InternalLoggingEvent& event) override;

    const std::shared_ptr<LogOutput> m_output;
};

/// Stands for the output's file, and for its console when it has both.
class CustomRollingFileAppender final : public OutputAppender {
public:
    /// Opens the file of a library path.
    CustomRollingFileAppender(const std::string& path, std::shared_ptr<LogOutput> output);
    ~CustomRollingFileAppender() override;

    void close() override;
};

/// Stands for the output's console while it has no file.
class ConsoleAppender final : public OutputAppender {
public:
    explicit ConsoleAppender(std::shared_ptr<LogOutput> output);
    ~ConsoleAppender() override;

    void close() override;

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override;
};

}  // namespace quillon
