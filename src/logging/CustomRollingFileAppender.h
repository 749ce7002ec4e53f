#pragma once

#include <log4cplus/appender.h>

#include <memory>

#include "logging/LogOutput.h"

namespace quillon {

/// Bring what a host logs through log4cplus itself to a LogOutput. CLogger's own entries go there directly,
/// and pass log4cplus only for the sake of appenders of the host (see Log4cplusRoot.h).
///
/// The file appender does not use log4cplus's stream, which goes through the ANSI code page, can be inherited
/// by children, asks for its position twice an entry and is truncated when a rename fails.
///
/// Both are made once and never destroyed, and are attached to the root again and again: the destructor of
/// log4cplus's base class asks for memory, and a process that has none would be ended by it.
class OutputAppender : public log4cplus::Appender {
public:
    /// `ownName` is a literal. It is to be renewed before it is attached.
    OutputAppender(const char* ownName, std::shared_ptr<LogOutput> output);

    /// Makes it as good as new: without what a host may have set, and not closed.
    void Renew();

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override;

    const char* const m_ownName;
    const std::shared_ptr<LogOutput> m_output;
};

/// Stands for the output's file, and for its console when it has both.
class CustomRollingFileAppender final : public OutputAppender {
public:
    using OutputAppender::OutputAppender;
    ~CustomRollingFileAppender() override;

    void close() override;

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override;
};

/// Stands for the output's console while it has no file.
class ConsoleAppender final : public OutputAppender {
public:
    using OutputAppender::OutputAppender;
    ~ConsoleAppender() override;

    void close() override;

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override;
};

}  // namespace quillon
