#include "logging/CustomRollingFileAppender.h"

#include <log4cplus/spi/loggingevent.h>

#include <utility>

#include "logging/LineLayout.h"
#include "logging/Log4cplusRoot.h"

namespace quillon {

OutputAppender::OutputAppender(const char* ownName, std::shared_ptr<LogOutput> output)
    : m_ownName(ownName), m_output(std::move(output)) {}

void OutputAppender::Renew() {
    name = m_ownName;
    setLayout(std::make_unique<LineLayout>());
    threshold = log4cplus::NOT_SET_LOG_LEVEL;
    filter = nullptr;
    closed = false;
}

void OutputAppender::append(const log4cplus::spi::InternalLoggingEvent& event) {
    if (event.getType() == kOwnEvent) return;
    const LineParts parts = LineLayout::PartsOf(event);
    if (dynamic_cast<LineLayout*>(layout.get()) != nullptr) {
        m_output->Write(parts);
    } else {
        const std::string line = formatEvent(event);  // a report may use its buffer
        m_output->WriteLine(line, parts.Second());
    }
}

CustomRollingFileAppender::~CustomRollingFileAppender() { destructorImpl(); }

void CustomRollingFileAppender::close() {
    closed = true;
    if (!HasLog4cplusEnded()) m_output->CloseFile();
}

void CustomRollingFileAppender::append(const log4cplus::spi::InternalLoggingEvent& event) {
    if (m_output->HasFile()) OutputAppender::append(event);
}

ConsoleAppender::~ConsoleAppender() { destructorImpl(); }

void ConsoleAppender::close() {
    closed = true;
    if (!HasLog4cplusEnded()) m_output->CloseConsole();
}

void ConsoleAppender::append(const log4cplus::spi::InternalLoggingEvent& event) {
    if (!m_output->HasFile()) OutputAppender::append(event);
}

}  // namespace quillon
