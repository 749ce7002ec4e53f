#pragma once

#include <cstdint>
#include <string>

#include "platform/OutputCapture.h"
#include "quillon/DataTable.h"

namespace quillon {

/// Collects what a command writes, up to a limit. Past it, and when there is no memory for more, it reads
/// on and keeps nothing.
class CommandOutput {
public:
    /// `limit` in bytes; 0: none.
    explicit CommandOutput(std::uint64_t limit) : m_limit(limit) {}

    /// Makes the pipe; returns false, with the last error set, when that fails.
    bool Open() { return m_capture.Open(); }
    [[nodiscard]] platform::OutputCapture& Capture() { return m_capture; }

    /// Takes one piece of what is there.
    void TakePiece();
    /// Takes what is there now, and no more: a descendant of the command may write for ever.
    void TakeRest();

    /// Returns whether more was written than the limit allows.
    [[nodiscard]] bool IsPastLimit() const { return m_limit > 0 && m_total > m_limit; }
    /// Returns the Windows code of what kept output from being kept; 0 when nothing did.
    [[nodiscard]] std::uint32_t Fault() const { return m_fault; }
    /// Returns the number of bytes that are kept.
    [[nodiscard]] std::uint64_t Size() const { return m_bytes.size(); }
    /// Returns the text in UTF-8, without trailing white space, and forgets it. `codePage` as in the
    /// properties; it is reset when the system does not have it, see LastError().
    std::string TakeText(std::uint32_t& codePage);

private:
    void Keep(std::string_view piece);
    std::string Decode(std::uint32_t& codePage);

    platform::OutputCapture m_capture;
    std::uint64_t m_limit;
    std::uint64_t m_total = 0;
    std::uint32_t m_fault = 0;
    std::string m_bytes;
};

/// Appends the rows of an output: one with the whole text, or one a line.
void AddOutputRows(std::string text, int exitCode, bool asLines, DataTable& table);
/// Gives a table without rows its columns.
void SetOutputColumns(bool asLines, DataTable& table);

}  // namespace quillon
