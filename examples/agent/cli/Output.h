#pragma once

#include <cstdio>
#include <memory>
#include <string_view>

#include "quillon/DataTable.h"

namespace quillon::agent {

enum class Format { Text, Json, JsonLines, Csv, Line, Markdown, OpenMetrics };

/// The process's standard output, kept for results.
///
/// CLogger writes every entry to standard output, and so may any library. A
/// program that reads our tables must never meet such a line, so standard output
/// is taken away before anything else starts: whoever writes to it afterwards
/// writes to standard error, and only this class still reaches the real one.
class Output {
public:
    /// Throws std::system_error when there is no standard output.
    Output();

    /// Throws std::system_error when it cannot be written.
    void Write(std::string_view text);
    /// Writes a table row by row, with a line end at its end; nothing for an undefined table. A text for
    /// a terminal is cut to its width. Metrics are named after the method.
    void Write(const DataTable& table, Format format, const std::string& method);
    /// Returns how many characters a line of the terminal has; 0 when it is none.
    std::size_t Width() const;

private:
    struct Closer {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };

    std::unique_ptr<std::FILE, Closer> m_stream;
};

}  // namespace quillon::agent
