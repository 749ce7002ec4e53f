#pragma once

#include <cstdint>
#include <string>

#include "platform/Handle.h"
#include "quillon/DataTable.h"

namespace quillon {

/// The temporary file that a command's output goes to. It is erased with its owner.
class CommandOutput {
public:
    CommandOutput() = default;
    CommandOutput(const CommandOutput&) = delete;
    CommandOutput& operator=(const CommandOutput&) = delete;
    ~CommandOutput();

    /// Creates the file; returns false, with the last error set, when that fails.
    bool Open();
    [[nodiscard]] const platform::FileHandle& File() const { return m_file; }
    /// Bytes written so far.
    [[nodiscard]] std::uint64_t Size() const;
    /// Closes the file, cut to `limit` bytes unless that is 0, and returns its size.
    std::uint64_t Close(std::uint64_t limit);
    /// The text in UTF-8 of what the file held when it was closed, without trailing
    /// white space.
    [[nodiscard]] std::string Read() const;
    void Erase();

private:
    std::string m_path;
    platform::FileHandle m_file;
    std::uint64_t m_size = 0;  // when it was closed
};

/// Appends the rows of an output: one with the whole text, or one a line.
void AddOutputRows(std::string text, int exitCode, bool asLines, DataTable& table);
/// The columns of a table without rows.
void SetOutputColumns(bool asLines, DataTable& table);

}  // namespace quillon
