#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "quillon/ICLogger.h"

namespace quillon::test {

/// Registers itself with ServiceLocator for its life and keeps what is logged.
/// Writes from any thread; each clobbers the system's last error and errno, as a
/// real logger may.
class RecordingLogger final : public ICLogger {
public:
    struct Entry {
        Level level;
        std::string text;
    };

    RecordingLogger();
    ~RecordingLogger() override;

    std::vector<Entry> Entries() const;
    /// The texts, of all levels or of one.
    std::vector<std::string> Lines() const;
    std::vector<std::string> Lines(Level level) const;
    void Forget();

    void InitializeLogging(const char* path, Level level) override;
    bool IsInitialized() const override;
    void StopLogging() override;
    void Trace(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Debug(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Info(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Warn(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Error(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void Fatal(const char* format, ...) override QUILLON_PRINTF(2, 3);
    void TraceV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void DebugV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void InfoV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void WarnV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void ErrorV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    void FatalV(const char* format, std::va_list arguments) override QUILLON_PRINTF(2, 0);
    const std::string& GetPath() const override;
    void SetPath(const std::string& path) override;
    Level SetLevel(Level level) override;
    Level GetLevel() override;

private:
    void Record(Level level, const char* format, std::va_list arguments) QUILLON_PRINTF(3, 0);

    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
    Level m_level = Level::Trace;
    std::string m_path;
};

}  // namespace quillon::test
