#include "quillon/JsonLinesLogger.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <utility>

#include "base/NeverDestroyed.h"
#include "base/OwnFigures.h"
#include "logging/JsonLock.h"
#include "logging/RollOverBanner.h"
#include "logging/RollingFile.h"
#include "platform/ProcessStagesApi.h"
#include "platform/StandardStreamApi.h"
#include "platform/ThreadApi.h"
#include "quillon/DataTable.h"
#include "quillon/DataTableIO.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/LoggerUtils.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using Clock = RollingFile::Clock;

constexpr const char* kTitle = "--------------------------- Log roll-over ----------------------------";

const char* NameOf(ICLogger::Level level) {
    static constexpr const char* kNames[] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATAL"};
    return kNames[level];
}

std::string TextOf(Clock::time_point time) {
    return DateTimeUtils::FormatTimeAsISO8601(
        TimePoint(std::chrono::duration_cast<TimePoint::duration>(time.time_since_epoch())));
}

std::string LineOf(ICLogger::Level level, const std::string& message, Clock::time_point time) {
    DataTable table;
    VariantList row;
    row.Add("time", TextOf(time));
    row.Add("level", NameOf(level));
    row.Add("thread", static_cast<long long>(platform::CurrentThreadId()));
    row.Add("message", message);
    table.AddRow(std::move(row));
    return ToJsonLines(table);
}

std::string NoteOf(std::uint64_t count, const char* what, Clock::time_point first, Clock::time_point last) {
    const std::string text =
        std::to_string(count) + ' ' + what + " between " + TextOf(first) + " and " + TextOf(last);
    return LineOf(ICLogger::Level::Warn, text, Clock::now());
}

void Complain(const std::string& text) {
    if (platform::TakesText(platform::StandardStream::Error))
        std::fputs(("JsonLinesLogger: " + text + '\n').c_str(), stderr);
}

}  // namespace

struct JsonLinesLogger::Impl {
    std::shared_ptr<RollingFile> file;
    std::atomic<bool> hasFile{false};
    std::string path;
};

RenewableMutex& TheJsonMutex() {
    static RenewableMutex& mutex = []() -> RenewableMutex& {
        static base::NeverDestroyed<RenewableMutex> kept;
        platform::HandleStages({[] { TheJsonMutex().lock(); }, [] { TheJsonMutex().unlock(); },
                                [] { TheJsonMutex().Renew(); }, [] {}});
        return kept.Get();
    }();
    return mutex;
}

JsonLinesLogger::JsonLinesLogger() : m_impl(std::make_unique<Impl>()) { TheJsonMutex(); }
JsonLinesLogger::~JsonLinesLogger() = default;

void JsonLinesLogger::InitializeLogging(const char* path, Level level) {
    SetLevel(level);
    if (path != nullptr) SetPath(path);
}

bool JsonLinesLogger::IsInitialized() const { return m_impl->hasFile.load(std::memory_order_relaxed); }

void JsonLinesLogger::StopLogging() {
    const std::lock_guard lock(TheJsonMutex());
    m_impl->file.reset();
    m_impl->hasFile = false;
    m_impl->path.clear();
}

const std::string& JsonLinesLogger::GetPath() const { return m_impl->path; }

void JsonLinesLogger::SetPath(const std::string& path) {
    if (path.empty() || path == m_impl->path) return;
    PrepareRollOverBanner();
    // The report goes to this logger alone: another one could wait for a thread that writes here.
    const auto report = [this] { LoggerUtils::LogCopyright(kTitle, this, false); };
    auto file = std::make_shared<RollingFile>(path, RollingFile::Hooks{report, &Complain, &NoteOf});
    const std::lock_guard lock(TheJsonMutex());
    m_impl->file.swap(file);
    m_impl->hasFile = true;
    m_impl->path = path;
}

void JsonLinesLogger::Write(Level level, const char* format, std::va_list arguments) {
    try {
        const Clock::time_point now = Clock::now();
        const std::string line = LineOf(level, StringUtils::Format(format, arguments), now);
        const std::lock_guard lock(TheJsonMutex());
        const std::shared_ptr<RollingFile> file = m_impl->file;
        if (file == nullptr) return;
        file->Write(line, std::chrono::floor<std::chrono::seconds>(now.time_since_epoch()).count());
        file->RollOverIfDue();
    } catch (...) {  // no memory
        base::CountDroppedLogLine();
    }
}

}  // namespace quillon
