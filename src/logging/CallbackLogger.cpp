#include "logging/CallbackLogger.h"

#include <utility>

#include "logging/EntryText.h"

namespace quillon {

CallbackLogger::CallbackLogger(CLogger::Callback callback) : m_callback(std::move(callback)) {}
CallbackLogger::~CallbackLogger() = default;

void CallbackLogger::InitializeLogging(const char*, Level) {}

ICLogger::Level CallbackLogger::SetLevel(Level level) {
    LoggerBase::SetLevel(level);
    return level;
}

void CallbackLogger::Write(Level level, const char* format, std::va_list arguments) {
    if (const auto text = EntryText(format, arguments)) m_callback(level, *text);
}

}  // namespace quillon
