#include "logging/LogOutput.h"

#include <mutex>
#include <utility>

#include "base/OwnFigures.h"

namespace quillon {

namespace {

using Clock = RollingFile::Clock;

/// What a file says about itself stands under this thread's name: it is nobody's entry.
std::string MakeNote(std::uint64_t count, const char* what, Clock::time_point first, Clock::time_point last) {
    const std::string text = std::to_string(count) + ' ' + what + " between " + LineFormat::TextOf(first) +
                             " and " + LineFormat::TextOf(last);
    std::string line;
    LineFormat().Format({Clock::now(), "0", "WARN", text}, line);
    return line;
}

}  // namespace

/// Says that a line is being written, while it lives.
class LogOutput::Writing {
public:
    explicit Writing(LogOutput& output) : m_output(output) {
        if (m_output.m_depth++ == 0) SetWriter(std::this_thread::get_id());
    }
    ~Writing() {
        if (--m_output.m_depth > 0) return;
        SetWriter({});
        if (!m_output.m_replaced.empty()) m_output.m_replaced.clear();
    }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

private:
    void SetWriter(std::thread::id thread) { m_output.m_writer.store(thread, std::memory_order_relaxed); }

    LogOutput& m_output;
};

LogOutput::LogOutput(std::function<void()> report, std::function<void(const std::string&)> complain,
                     RollingFile::Limits limits)
    : m_hooks{std::move(report), std::move(complain), &MakeNote}, m_limits(limits) {}

void LogOutput::OpenFile(const std::string& path) {
    Replace(std::make_unique<RollingFile>(path, m_hooks, m_limits));
}

void LogOutput::CloseFile() { Replace(nullptr); }

/// A line that is being written, whose report has led here, still needs the old file.
void LogOutput::Replace(std::unique_ptr<RollingFile> file) {
    const std::lock_guard lock(m_mutex);
    if (m_depth > 0) m_replaced.reserve(m_replaced.size() + 1);
    m_file.swap(file);
    m_hasFile = m_file != nullptr;
    if (m_depth > 0 && file) m_replaced.push_back(std::move(file));
}

void LogOutput::OpenConsole() {
    const std::lock_guard lock(m_mutex);
    m_console.emplace();
    m_hasConsole = true;
}

void LogOutput::CloseConsole() {
    const std::lock_guard lock(m_mutex);
    m_console.reset();
    m_hasConsole = false;
}

bool LogOutput::Write(std::string_view thread, std::string_view level, std::string_view message) noexcept {
    const std::lock_guard lock(m_mutex);
    WriteLocked({Clock::now(), thread, level, message});
    return m_depth == 0;
}

void LogOutput::Write(const LineParts& parts) noexcept {
    const std::lock_guard lock(m_mutex);
    WriteLocked(parts);
}

void LogOutput::WriteLocked(const LineParts& parts) noexcept {
    const Writing writing(*this);
    RollingFile* const file = m_file.get();  // the report may change to another one
    const std::int64_t second = parts.Second();
    try {
        m_format.Format(parts, m_line);
        // What the file writes before this line are lines of its own, in the same place.
        if (!file || file->IsCalm(second)) {
            Put(file, m_line, second);
        } else {
            Put(file, std::string(m_line), second);
        }
    } catch (...) {  // no memory: nothing of the line is written yet
        file ? file->Lose() : base::CountDroppedLogLine();
    }
    if (file) file->RollOverIfDue();
}

void LogOutput::WriteLine(std::string_view line, std::int64_t second) noexcept {
    const std::lock_guard lock(m_mutex);
    const Writing writing(*this);
    RollingFile* const file = m_file.get();
    Put(file, line, second);
    if (file) file->RollOverIfDue();
}

void LogOutput::Put(RollingFile* file, std::string_view line, std::int64_t second) noexcept {
    if (file != nullptr) file->Write(line, second);
    if (m_console) m_console->Write(line, second);
}

}  // namespace quillon
