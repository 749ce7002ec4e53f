#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "logging/ConsoleCopy.h"
#include "logging/LineFormat.h"
#include "logging/RenewableMutex.h"
#include "logging/RollingFile.h"

namespace quillon {

/// Where log lines go: to a rolling file, and then to the console. A line is formatted once. Thread-safe; the
/// file's report may use it again on the same thread. Nothing of the process's end is waited for here.
class LogOutput {
public:
    /// `report` and `complain` are what RollingFile::Hooks says.
    LogOutput(std::function<void()> report, std::function<void(const std::string&)> complain,
              RollingFile::Limits limits = {});

    /// Changes to another file: the new one is open before the old one is closed, and no line falls between
    /// them. A line that is being written still goes to the old one.
    void OpenFile(const std::string& path);
    void CloseFile();
    bool HasFile() const { return m_hasFile; }
    void OpenConsole();
    void CloseConsole();
    bool HasConsole() const { return m_hasConsole; }

    /// Formats and writes a line whose time is now. Returns false when it was written within a report, under
    /// the lock of the line that caused it.
    bool Write(std::string_view thread, std::string_view level, std::string_view message) noexcept;
    /// Formats and writes a line.
    void Write(const LineParts& parts) noexcept;
    /// Writes a line that is formatted, line end included.
    void WriteLine(std::string_view line, std::int64_t second) noexcept;

    /// Returns whether the current thread is writing a line, which is when a report runs.
    bool IsWritingHere() const {
        return m_writer.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    /// For the fork of the process: takes and gives back the lock, or makes it anew.
    RenewableMutex& Mutex() { return m_mutex; }

private:
    class Writing;

    void Replace(std::unique_ptr<RollingFile> file);
    void WriteLocked(const LineParts& parts) noexcept;
    void Put(RollingFile* file, std::string_view line, std::int64_t second) noexcept;

    const RollingFile::Hooks m_hooks;
    const RollingFile::Limits m_limits;
    RenewableMutex m_mutex;
    int m_depth = 0;  ///< of lines that are being written, one within the other
    std::atomic<std::thread::id> m_writer{};
    std::unique_ptr<RollingFile> m_file;
    std::vector<std::unique_ptr<RollingFile>> m_replaced;  ///< in use until the line is written
    std::optional<ConsoleCopy> m_console;
    LineFormat m_format;
    std::string m_line;  ///< used again for each line
    std::atomic<bool> m_hasFile{false}, m_hasConsole{false};
};

}  // namespace quillon
