#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "logging/Backups.h"
#include "platform/Handle.h"

namespace quillon {

/// A log file of limited size and its backups. No line is lost to a roll-over: the file is renamed while it
/// is open, and written to until the new one is open. A line that no file takes is counted, and once lines
/// are taken again the file says how many were lost and when.
///
/// The caller serialises the operations. The report may call Write() again on the same thread.
class RollingFile {
public:
    using Clock = std::chrono::system_clock;

    struct Limits {
        std::uint64_t size = 5'242'880;  ///< bytes; a file that is larger is rolled over
        int backups = 5;
    };
    /// What the file asks of its owner; each may be empty, and what one throws is dropped.
    struct Hooks {
        /// Writes the first lines of a new file, by Write(). It runs before any other line gets into the
        /// file, again when some of its lines are lost, and never rolls the file over, however much it
        /// writes. It must not wait for a lock under which another thread logs.
        std::function<void()> report;
        /// Tells a person about the trouble; lines cannot be written, or the file cannot be rolled over.
        std::function<void(const std::string& text)> complain;
        /// Makes a line, with its line end, of what the file says about itself: "`count` `what` between
        /// `first` and `last`".
        std::function<std::string(std::uint64_t count, const char* what, Clock::time_point first,
                                  Clock::time_point last)>
            makeNote;
    };

    /// Opens the file; when that is refused, each line tries again. A relative path means the working
    /// directory of this moment from now on.
    RollingFile(const std::string& path, Hooks hooks, Limits limits);
    RollingFile(const std::string& path, Hooks hooks) : RollingFile(path, std::move(hooks), Limits{}) {}
    ~RollingFile() = default;
    RollingFile(const RollingFile&) = delete;
    RollingFile& operator=(const RollingFile&) = delete;

    /// Returns whether the next line of that second goes straight to the file. Otherwise Write() may run the
    /// report before it, so the line must not stand in a buffer that the report's lines use.
    bool IsCalm(std::int64_t second) const {
        return m_state == State::Open && second == m_checkedAt && !m_isReportDue && !IsRollOverDue();
    }
    /// Appends a whole line, its line end included. `second` is the line's time; once a second the file is
    /// looked for at its path.
    void Write(std::string_view line, std::int64_t second) noexcept;
    /// Ends an entry: rolls the file over if its line was too much.
    void RollOverIfDue() noexcept;
    /// Counts a line that did not even get here.
    void Lose() noexcept;

    bool IsOpen() const { return m_state == State::Open; }
    const std::string& GetPath() const { return m_path; }

private:
    enum class State {
        Open,     ///< lines are written
        Refused,  ///< there is no file
        Full      ///< there is a file that takes nothing
    };
    struct Losses {
        std::uint64_t count = 0;
        Clock::time_point first, last;
        void Add(Clock::time_point now);
    };

    void Prepare(std::int64_t second);
    void LookForFile();
    bool Recover();
    void BecomeOpen();
    void BecomeRefused();
    void BecomeFull();

    bool IsRollOverDue() const { return m_size > m_rollOverAt && !m_isReporting; }
    void RollOver();
    void MoveAside();
    void AcceptRollOver();
    void RefuseRollOver();
    void ReportIfDue();

    bool Reopen();
    bool OpenInFolder();
    bool Deliver(std::string_view text);
    bool Append(std::string_view text);
    bool AppendOnce(std::string_view text);

    std::string NoteOf(const Losses& losses, const char* what) const;
    void Note(const std::string& text);
    void Complain(const std::string& what) const noexcept;

    const std::string m_path;
    const Hooks m_hooks;
    const Limits m_limits;
    Backups m_backups;
    State m_state = State::Open;
    platform::FileHandle m_file;
    std::uint64_t m_size = 0;      ///< of the file, counted by what is written
    std::uint64_t m_rollOverAt;    ///< the size past which the file is moved aside
    std::int64_t m_checkedAt = 0;  ///< the second in which the file was looked for last
    bool m_isLineTorn = false;     ///< the file ends in a part of a line
    bool m_isReportDue = false;    ///< the file is new and its report not yet in it
    bool m_isReporting = false;
    bool m_isReportTorn = false;  ///< a line of the report under way was lost
    Losses m_lost, m_refusedRollOvers;
};

}  // namespace quillon
