#include "logging/CustomRollingFileAppender.h"

#include <algorithm>
#include <utility>

#include "base/OwnFigures.h"
#include "platform/FileApi.h"
#include "platform/LogFileApi.h"
#include "quillon/DestructorFunctor.h"

namespace quillon {

namespace {

constexpr long kMaxFileSize = 5'242'880;
constexpr int kBackups = 5;
/// A file that cannot be moved aside grows by this much between two attempts.
constexpr std::uint64_t kRetryAfter = kMaxFileSize / 16;

void MakeFoldersOf(const std::string& path) {
    constexpr const char* kSeparators = "\\/";
    for (auto end = path.find_first_of(kSeparators, 1); end != std::string::npos;
         end = path.find_first_of(kSeparators, end + 1)) {
        platform::MakeOneDirectory(path.substr(0, end));
    }
}

std::string BackupOf(const std::string& path, int number) { return path + "." + std::to_string(number); }

/// Moves the file and its backups one number up. Only the backups before the
/// first free number move, so that attempts that fail on the file itself do not
/// push out one old backup each.
bool MoveAside(const std::string& path, int backups) {
    int free = 1;
    while (free < backups && platform::AttributesOf(BackupOf(path, free))) ++free;
    if (free == backups) platform::RemoveFile(BackupOf(path, backups));
    for (; free > 1; --free) {
        if (!platform::MovePath(BackupOf(path, free - 1), BackupOf(path, free))) return false;
    }
    return platform::MovePath(path, BackupOf(path, 1));
}

}  // namespace

CustomRollingFileAppender::CustomRollingFileAppender(const std::string& path,
                                                     std::function<void()> afterRollOver)
    // The constructor of the base opens its file before anything can be overridden, so it is given a path
    // that cannot be created.
    : RollingFileAppender(platform::NullDevice(), kMaxFileSize, kBackups, true, false),
      m_rollOverAt(kMaxFileSize),
      m_afterRollOver(std::move(afterRollOver)) {
    out.close();
    filename = path;
    IsOpenAgain();
}

CustomRollingFileAppender::~CustomRollingFileAppender() { destructorImpl(); }

void CustomRollingFileAppender::close() {
    const log4cplus::thread::MutexGuard guard(access_mutex);
    m_file.Reset();
    closed = true;
}

void CustomRollingFileAppender::append(const log4cplus::spi::InternalLoggingEvent& event) {
    if (IsRollOverDue() || m_isReportDue) {
        // The banner is logged on this thread, below, and reuses its event and buffer.
        const std::string line = formatEvent(event);
        IsRollOverDue() ? RollOver() : ReportRollOver();
        Write(line);
    } else {
        Write(formatEvent(event));
    }
    if (IsRollOverDue()) RollOver();
}

bool CustomRollingFileAppender::IsRollOverDue() const { return m_size > m_rollOverAt && !m_isReporting; }

void CustomRollingFileAppender::RollOver() {
    const bool isDevice = m_file && !platform::IsDiskFile(m_file);
    m_file.Reset();
    const bool isMoved = !isDevice && MoveAside(filename, maxBackupIndex);
    if (isMoved) {
        m_size = 0;
        m_isLineTorn = false;
        m_isReportDue = true;
    }
    m_rollOverAt = isMoved ? kMaxFileSize : std::max<std::uint64_t>(kMaxFileSize, m_size + kRetryAfter);
    ReportRollOver();
}

void CustomRollingFileAppender::ReportRollOver() {
    // A new file that cannot be opened yet gets its banner when it can.
    if (!IsOpenAgain() || !std::exchange(m_isReportDue, false) || !m_afterRollOver) return;
    m_isReporting = true;
    const DestructorFunctor done([this] { m_isReporting = false; });
    try {
        m_afterRollOver();
    } catch (...) {
        // An exception must not stop here: the entry that caused the roll-over is not written yet.
    }
    // With a banner longer than a file every entry would roll the log over until no other line is left.
    if (m_size > m_rollOverAt) m_rollOverAt = m_size + kRetryAfter;
}

bool CustomRollingFileAppender::Open() {
    m_file = platform::OpenLogFile(filename);
    if (!m_file) {
        MakeFoldersOf(filename);
        m_file = platform::OpenLogFile(filename);
    }
    if (!m_file) return false;
    m_size = platform::SizeOfOpenFile(m_file).value_or(0);
    return true;
}

bool CustomRollingFileAppender::IsOpenAgain() {
    if (m_file) return true;
    const auto now = std::chrono::steady_clock::now();
    if (now < m_openAgainAt) return false;
    if (Open()) return true;

    m_openAgainAt = now + std::chrono::seconds(reopenDelay);
    getErrorHandler()->error("Unable to open file: " + filename);
    return false;
}

void CustomRollingFileAppender::Write(std::string_view line) {
    if (!IsWritten(line)) base::CountDroppedLogLine();
}

bool CustomRollingFileAppender::IsWritten(std::string_view line) {
    if (!IsOpenAgain()) return false;
    if (m_isLineTorn && !Append("\n")) return false;

    const std::uint64_t before = m_size;
    const bool isComplete = Append(line);
    m_isLineTorn = !isComplete && m_size != before;
    if (isComplete) getErrorHandler()->reset();
    return isComplete;
}

bool CustomRollingFileAppender::Append(std::string_view text) {
    const platform::Appended appended = platform::AppendToLogFile(m_file, text);
    m_size += appended.bytes;
    if (appended.isComplete) return true;

    m_file.Reset();
    getErrorHandler()->error("Unable to write to file: " + filename);
    return false;
}

}  // namespace quillon
