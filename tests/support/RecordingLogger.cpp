#include "support/RecordingLogger.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "quillon/ServiceLocator.h"

namespace quillon::test {

RecordingLogger::RecordingLogger() { ServiceLocator::Put<ICLogger>(this); }

RecordingLogger::~RecordingLogger() {
    if (ServiceLocator::Get<ICLogger>(true) == this) ServiceLocator::Remove<ICLogger>();
}

std::vector<RecordingLogger::Entry> RecordingLogger::Entries() const {
    const std::lock_guard lock(m_mutex);
    return m_entries;
}

std::vector<std::string> RecordingLogger::Lines() const {
    std::vector<std::string> lines;
    for (const Entry& entry : Entries()) lines.push_back(entry.text);
    return lines;
}

std::vector<std::string> RecordingLogger::Lines(Level level) const {
    std::vector<std::string> lines;
    for (const Entry& entry : Entries()) {
        if (entry.level == level) lines.push_back(entry.text);
    }
    return lines;
}

void RecordingLogger::Forget() {
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
}

void RecordingLogger::Record(Level level, const char* format, std::va_list arguments) {
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    std::error_code ignored;
    static_cast<void>(std::filesystem::exists("?/no such folder", ignored));
    const std::lock_guard lock(m_mutex);
    if (m_level <= level) m_entries.push_back({level, std::move(text)});
}

#define QUILLON_TEST_LOG(name)                                                  \
    void RecordingLogger::name(const char* format, ...) {                       \
        std::va_list arguments;                                                 \
        va_start(arguments, format);                                            \
        Record(Level::name, format, arguments);                                 \
        va_end(arguments);                                                      \
    }                                                                           \
    void RecordingLogger::name##V(const char* format, std::va_list arguments) { \
        Record(Level::name, format, arguments);                                 \
    }
QUILLON_TEST_LOG(Trace)
QUILLON_TEST_LOG(Debug)
QUILLON_TEST_LOG(Info)
QUILLON_TEST_LOG(Warn)
QUILLON_TEST_LOG(Error)
QUILLON_TEST_LOG(Fatal)
#undef QUILLON_TEST_LOG

void RecordingLogger::InitializeLogging(const char*, Level level) { m_level = level; }
bool RecordingLogger::IsInitialized() const { return true; }
void RecordingLogger::StopLogging() {}
const std::string& RecordingLogger::GetPath() const { return m_path; }
void RecordingLogger::SetPath(const std::string& path) { m_path = path; }
ICLogger::Level RecordingLogger::SetLevel(Level level) { return std::exchange(m_level, level); }
ICLogger::Level RecordingLogger::GetLevel() { return m_level; }

}  // namespace quillon::test
