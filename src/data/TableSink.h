#pragma once

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>

namespace quillon {

/// Takes a table's text row by row and hands it to a stream, or keeps all of it. A stream costs the
/// memory of one row.
class TableSink {
public:
    /// Keeps the text of so many rows.
    explicit TableSink(std::size_t rows) : m_rows(rows) {}
    explicit TableSink(std::ostream& stream) : m_stream(&stream) {}

    /// What a row is appended to.
    std::string& Text() { return m_text; }

    /// Ends a row. Returns false when the stream has failed, so that the rest may be left out.
    bool EndRow() {
        if (m_stream == nullptr) {
            ++m_ended;
            if (m_text.capacity() - m_text.size() < kSmallRow) MakeRoom();
            return true;
        }
        m_stream->write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
        m_text.clear();
        return m_stream->good();
    }

private:
    static constexpr std::size_t kSmallRow = 256;
    /// Growing by more could take much memory in vain, when the first rows are the longest.
    static constexpr std::size_t kFastestGrowth = 4;

    /// Makes room for all rows if they are as long as those until now: growing in many steps would copy
    /// the text as often.
    void MakeRoom() {
        if (m_ended >= m_rows) return;
        const std::size_t mean = m_text.size() / m_ended + 1;
        const std::size_t rest = m_rows - m_ended;
        const std::size_t all = m_text.size() + (rest + 1) * (mean + mean / 16) + kSmallRow;
        m_text.reserve(std::clamp(all, 2 * m_text.size(), kFastestGrowth * m_text.size()));
    }

    std::ostream* m_stream = nullptr;
    std::string m_text;
    std::size_t m_rows = 0, m_ended = 0;
};

}  // namespace quillon
