#include "logging/CallbackLogger.h"

#include <utility>

#include "logging/LogOperations.h"
#include "quillon/StringUtils.h"

namespace quillon {

CallbackLogger::CallbackLogger(CLogger::Callback callback) : m_callback(std::move(callback)) {}
CallbackLogger::~CallbackLogger() = default;

void CallbackLogger::InitializeLogging(const char*, Level) {}
bool CallbackLogger::IsInitialized() const { return true; }
void CallbackLogger::StopLogging() {}
const std::string& CallbackLogger::GetPath() const { return NoLogPath(); }
void CallbackLogger::SetPath(const std::string&) {}
ICLogger::Level CallbackLogger::SetLevel(Level level) { return m_level = level; }
ICLogger::Level CallbackLogger::GetLevel() { return m_level; }

QUILLON_LOG_OPERATIONS(CallbackLogger, Write)

void CallbackLogger::Write(Level level, const char* format, std::va_list arguments) const {
    if (m_level > level) return;
    m_callback(level, StringUtils::Format(format, arguments));
}

}  // namespace quillon
