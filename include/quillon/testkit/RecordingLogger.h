#pragma once

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quillon/LoggerBase.h"
#include "quillon/ServiceLocator.h"

namespace quillon::testkit {

/// Registers itself with ServiceLocator for its life and keeps what is logged, whatever its level,
/// instead of printing it. Any thread may log; each entry changes the system's last error and errno, as
/// one of a real logger may.
///
/// @code
/// testkit::RecordingLogger log;
/// ServiceLocator::Get<ICLogger>()->Error("%s", "no such disk");
/// EXPECT_THAT(log.Lines(ICLogger::Level::Error), ElementsAre("no such disk"));
/// @endcode
class RecordingLogger final : public LoggerBase {
public:
    RecordingLogger() : LoggerBase(Level::Trace) { ServiceLocator::Put<ICLogger>(this); }
    ~RecordingLogger() override {
        if (ServiceLocator::Get<ICLogger>(true) == this) ServiceLocator::Remove<ICLogger>();
    }

    /// Returns the texts in the order of their entries, of all levels or of one.
    std::vector<std::string> Lines(std::optional<Level> level = {}) const {
        const std::lock_guard lock(m_mutex);
        std::vector<std::string> lines;
        for (const auto& [entryLevel, text] : m_entries) {
            if (entryLevel == level.value_or(entryLevel)) lines.push_back(text);
        }
        return lines;
    }
    /// Removes the entries so far.
    void Forget() {
        const std::lock_guard lock(m_mutex);
        m_entries.clear();
    }

private:
    QUILLON_PRINTF(3, 0) void Write(Level level, const char* format, std::va_list arguments) override {
        std::va_list again;
        va_copy(again, arguments);
        const int length = std::vsnprintf(nullptr, 0, format, again);
        va_end(again);
        std::string text(length < 0 ? 0U : static_cast<std::size_t>(length), '\0');
        std::vsnprintf(text.data(), text.size() + 1, format, arguments);
        std::error_code ignored;
        static_cast<void>(std::filesystem::exists("?/no such folder", ignored));
        const std::lock_guard lock(m_mutex);
        m_entries.emplace_back(level, std::move(text));
    }

    mutable std::mutex m_mutex;
    std::vector<std::pair<Level, std::string>> m_entries;
};

}  // namespace quillon::testkit
