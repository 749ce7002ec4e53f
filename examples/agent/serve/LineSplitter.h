#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon::agent {

/// Cuts a stream of bytes into lines, which end with LF or CR LF. A line that is longer than the limit is
/// thrown away, its rest as well, and told as such.
class LineSplitter {
public:
    struct Line {
        std::string_view text;   ///< without its end; valid until the next call
        bool isTooLong = false;  ///< and `text` is empty
    };

    explicit LineSplitter(std::size_t longest) : m_longest(longest) {}

    /// Takes the bytes from the front of `bytes` up to the end of a line, and returns whether there was one.
    bool Next(std::string_view& bytes, Line& line);
    /// Returns whether there is something after the last line end.
    bool Rest(Line& line);

private:
    void Keep(std::string_view piece);
    void Finish(Line& line);

    std::size_t m_longest;
    std::string m_line;
    bool m_isTooLong = false;
    bool m_isFinished = false;  // m_line was handed out
};

}  // namespace quillon::agent
