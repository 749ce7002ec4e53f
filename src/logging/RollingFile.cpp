#include "logging/RollingFile.h"

#include <algorithm>
#include <utility>

#include "base/OwnFigures.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/LogFileApi.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

constexpr const char* kLinesLost = "entries were lost";
constexpr const char* kRollOversRefused = "attempts to roll the log file over were refused";

/// A file that cannot be moved aside grows by this part of its limit between two attempts.
constexpr std::uint64_t kRetryPart = 16;

void MakeFoldersOf(const std::string& path) {
    constexpr const char* kSeparators = "\\/";
    for (auto end = path.find_first_of(kSeparators, 1); end != std::string::npos;
         end = path.find_first_of(kSeparators, end + 1)) {
        platform::MakeLogDirectory(path.substr(0, end));
    }
}

void KeepError() noexcept { base::TheLogFigures().lastError = platform::LastError(); }

}  // namespace

void RollingFile::Losses::Add(Clock::time_point now) {
    if (count++ == 0) first = now;
    last = now;
}

RollingFile::RollingFile(const std::string& path, Hooks hooks, Limits limits)
    : m_path(platform::FixedPath(path)),
      m_hooks(std::move(hooks)),
      m_limits(limits),
      m_backups(m_path, limits.backups),
      m_rollOverAt(limits.size) {
    if (!Reopen()) BecomeRefused();
    m_isReportDue = false;  // whoever starts the log writes its first lines
}

void RollingFile::Write(std::string_view line, std::int64_t second) noexcept {
    try {
        Prepare(second);
        if (m_state == State::Open && Deliver(line)) return;
        if (m_state == State::Open) BecomeFull();
    } catch (...) {  // there is no memory for what a change of the state takes
    }
    Lose();
}

void RollingFile::RollOverIfDue() noexcept {
    try {
        if (IsRollOverDue()) RollOver();
    } catch (...) {  // no memory: the next line tries again
    }
}

void RollingFile::Lose() noexcept {
    m_lost.Add(Clock::now());
    m_isReportTorn = true;
    base::CountDroppedLogLine();
}

void RollingFile::Prepare(std::int64_t second) {
    if (IsCalm(second)) return;
    try {
        if (std::exchange(m_checkedAt, second) != second && m_state == State::Open) LookForFile();
        if (IsRollOverDue()) RollOver();
    } catch (...) {  // no memory: the line may do without
    }
    if (m_state == State::Open || Recover()) ReportIfDue();
}

/// Somebody may have deleted, moved or emptied the file.
void RollingFile::LookForFile() {
    if (const auto size = platform::SizeWhileAt(m_file, m_path)) {
        if (*size != m_size) m_isLineTorn = platform::EndsWithinLine(m_file, *size);
        m_size = *size;
    } else {
        Reopen();
    }
}

// The states. Each is entered in one place, which tells a person once.

bool RollingFile::Recover() {
    if (!m_file && !Reopen()) return false;
    if (m_lost.count > 0 && !Deliver(NoteOf(m_lost, kLinesLost))) {
        if (m_state == State::Refused) BecomeFull();
        return false;
    }
    BecomeOpen();
    return true;
}

void RollingFile::BecomeOpen() {
    m_state = State::Open;
    m_lost = {};
}

void RollingFile::BecomeRefused() {
    m_state = State::Refused;
    Complain("Unable to open file: ");
}

void RollingFile::BecomeFull() {
    m_state = State::Full;
    Complain("Unable to write to file: ");
}

// Rolling over.

void RollingFile::RollOver() {
    if (m_file && !platform::IsDiskFile(m_file)) {
        m_rollOverAt = m_size + m_limits.size;
        return;
    }
    LookForFile();
    if (!IsRollOverDue() || !platform::TryLockLogFile(m_file)) return;
    LookForFile();  // another process may have been at it until now
    if (IsRollOverDue()) MoveAside();
    platform::UnlockLogFile(m_file);
}

/// Two processes that did this at once would push out more backups than they fill.
void RollingFile::MoveAside() {
    if (!m_backups.MoveAside()) return RefuseRollOver();
    if (Reopen()) return AcceptRollOver();
    const std::uint32_t reason = platform::LastError();
    // If this fails as well, the file is missed, and made anew, within a second.
    m_backups.MoveBack();
    platform::SetLastErrorCode(reason);
    RefuseRollOver();
}

void RollingFile::AcceptRollOver() {
    m_rollOverAt = m_limits.size;
    m_isReportDue = true;
    const Losses refused = std::exchange(m_refusedRollOvers, {});
    if (m_state == State::Open) ReportIfDue();
    if (refused.count > 0) Note(NoteOf(refused, kRollOversRefused));
}

void RollingFile::RefuseRollOver() {
    KeepError();
    m_rollOverAt = std::max(m_limits.size, m_size + m_limits.size / kRetryPart);
    base::TheLogFigures().refusedRollOvers.fetch_add(1, std::memory_order_relaxed);
    if (m_refusedRollOvers.count == 0) Complain("Unable to roll over file: ");
    m_refusedRollOvers.Add(Clock::now());
}

void RollingFile::ReportIfDue() {
    if (!m_isReportDue || m_isReporting) return;
    m_isReportDue = false;
    if (!m_hooks.report) return;
    m_isReporting = true;
    m_isReportTorn = false;
    const DestructorFunctor done([this] { m_isReporting = false; });
    try {
        m_hooks.report();
    } catch (...) {
        // An exception must not stop here: the entry that caused the roll-over is not written yet.
    }
    m_isReportDue = m_isReportTorn;
    // With a report longer than a file every entry would roll the log over until no other line is left.
    if (m_size > m_rollOverAt) m_rollOverAt = m_size + m_limits.size / kRetryPart;
}

// The file.

/// Opens what the path leads to now. The old file stays in use until that has succeeded.
bool RollingFile::Reopen() {
    platform::FileHandle file = platform::OpenLogFile(m_path);
    if (!file) {
        MakeFoldersOf(m_path);
        file = platform::OpenLogFile(m_path);
    }
    if (!file) {
        KeepError();
        return false;
    }
    m_size = platform::SizeOfOpenFile(file).value_or(0);
    m_isLineTorn = platform::EndsWithinLine(file, m_size);
    m_isReportDue = m_isReportDue || m_size == 0;
    m_file = std::move(file);
    return true;
}

/// Writes to the file, or to the one that has taken its place.
bool RollingFile::Deliver(std::string_view text) {
    if (Append(text)) return true;
    KeepError();
    const std::uint32_t reason = platform::LastError();
    if (!platform::SizeWhileAt(m_file, m_path) && Reopen() && Append(text)) return true;
    platform::SetLastErrorCode(reason);
    return false;
}

bool RollingFile::Append(std::string_view text) {
    if (m_isLineTorn && !AppendOnce("\n")) return false;
    return AppendOnce(text);
}

bool RollingFile::AppendOnce(std::string_view text) {
    const platform::Appended appended = platform::AppendToLogFile(m_file, text);
    m_size += appended.bytes;
    base::TheLogFigures().bytes.fetch_add(appended.bytes, std::memory_order_relaxed);
    if (appended.bytes > 0) m_isLineTorn = !appended.isComplete;
    return appended.isComplete;
}

// What the file says.

std::string RollingFile::NoteOf(const Losses& losses, const char* what) const {
    if (!m_hooks.makeNote) return std::to_string(losses.count) + ' ' + what + '\n';
    return m_hooks.makeNote(losses.count, what, losses.first, losses.last);
}

/// Writes a line of the file's own, which is no entry: nothing is lost with it.
void RollingFile::Note(const std::string& line) {
    if (m_state == State::Open && !Deliver(line)) BecomeFull();
}

void RollingFile::Complain(const std::string& what) const noexcept {
    const auto code = static_cast<std::int32_t>(platform::LastError());
    try {
        if (!m_hooks.complain) return;
        std::string reason = StringUtils::GetErrorAsString(code);
        m_hooks.complain(what + m_path + ": " + StringUtils::Trim(reason));
    } catch (...) {  // a person may learn it from the log's own note
    }
}

}  // namespace quillon
