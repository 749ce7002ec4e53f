#include "quillon/TeeLogger.h"

#include <exception>
#include <string>
#include <utility>

#include "logging/EntryText.h"
#include "quillon/detail/EntryOperation.h"

namespace quillon {

TeeLogger::TeeLogger(std::vector<ICLogger*> loggers)
    : LoggerBase(Level::Trace), m_loggers(std::move(loggers)) {}
TeeLogger::~TeeLogger() = default;

const std::string& TeeLogger::GetPath() const {
    for (const ICLogger* const logger : m_loggers) {
        if (const std::string& path = logger->GetPath(); !path.empty()) return path;
    }
    return LoggerBase::GetPath();
}

void TeeLogger::Write(Level level, const char* format, std::va_list arguments) {
    const auto text = EntryText(format, arguments);
    if (!text) return;
    std::exception_ptr failure;
    for (ICLogger* const logger : m_loggers) {
        try {
            (logger->*detail::OperationOf(level))("%s", text->c_str());
        } catch (...) {
            if (failure == nullptr) failure = std::current_exception();
        }
    }
    if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace quillon
