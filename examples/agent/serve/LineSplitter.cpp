#include "serve/LineSplitter.h"

namespace quillon::agent {

bool LineSplitter::Next(std::string_view& bytes, Line& line) {
    const std::size_t end = bytes.find('\n');
    Keep(bytes.substr(0, end));
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (end == std::string_view::npos) return false;
    Finish(line);
    return true;
}

bool LineSplitter::Rest(Line& line) {
    if (m_isFinished || (m_line.empty() && !m_isTooLong)) return false;
    Finish(line);
    return true;
}

void LineSplitter::Keep(std::string_view piece) {
    if (m_isFinished) {
        m_line.clear();
        m_isTooLong = m_isFinished = false;
    }
    const std::size_t room = m_longest + 1 - m_line.size();  // for a CR that belongs to the end as well
    m_isTooLong = m_isTooLong || piece.size() > room;
    if (m_isTooLong) {
        m_line = {};  // gives the memory back
    } else {
        m_line += piece;
    }
}

void LineSplitter::Finish(Line& line) {
    if (m_line.ends_with('\r')) m_line.pop_back();
    if (m_line.size() > m_longest) {
        m_line = {};
        m_isTooLong = true;
    }
    line = {m_line, m_isTooLong};
    m_isFinished = true;
}

}  // namespace quillon::agent
