#pragma once

#include <ostream>
#include <string>

namespace quillon {

/// Takes a table's text row by row and hands it to a stream, or keeps all of it. A stream costs the
/// memory of one row.
class TableSink {
public:
    TableSink() = default;
    explicit TableSink(std::ostream& stream) : m_stream(&stream) {}

    /// What a row is appended to.
    std::string& Text() { return m_text; }

    /// Ends a row. Returns false when the stream has failed, so that the rest may be left out.
    bool EndRow() {
        if (m_stream == nullptr) return true;
        m_stream->write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
        m_text.clear();
        return m_stream->good();
    }

private:
    std::ostream* m_stream = nullptr;
    std::string m_text;
};

}  // namespace quillon
