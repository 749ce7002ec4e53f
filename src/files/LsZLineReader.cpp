#include "files/LsZLineReader.h"

#include <algorithm>

namespace quillon {

namespace {

constexpr std::size_t kMostUnits = 1139;
constexpr std::size_t kBufferSize = std::size_t{128} << 10;
constexpr std::string_view kMark = "\xFF\xFE";

}  // namespace

LsZLineReader::LsZLineReader(const std::string& path) : m_file(platform::OpenForReading(path)) {
    if (!IsOpen()) return;
    m_reader.emplace(m_file);
    m_buffer.resize(kBufferSize);
    while (m_end < kMark.size() && Refill()) {
    }
    if (!Buffered().starts_with(kMark)) return;
    m_unitSize = 2;
    m_begin = kMark.size();
}

bool LsZLineReader::Refill() {
    if (m_hasFailed || !m_reader) return false;
    std::copy(m_buffer.data() + m_begin, m_buffer.data() + m_end, m_buffer.data());
    m_end -= m_begin;
    m_begin = 0;
    const auto count = m_reader->Read(m_buffer.data() + m_end, m_buffer.size() - m_end);
    m_hasFailed = !count;
    m_end += count.value_or(0);
    return count.value_or(0) > 0;
}

std::size_t LsZLineReader::LineLength(std::string_view window) const {
    for (std::size_t at = 0; (at = window.find('\n', at)) != std::string_view::npos; ++at) {
        if (m_unitSize == 1) return at + 1;
        if (at % 2 == 0 && at + 1 < window.size() && window[at + 1] == '\0') return at + 2;
    }
    return std::string_view::npos;
}

double LsZLineReader::ShareRead() const {
    const std::uint64_t limit = m_reader ? m_reader->Limit() : 0;
    const auto whole = static_cast<double>(std::max<std::uint64_t>(limit, 1));
    return std::clamp(static_cast<double>(m_given) / whole, 1 / whole, 1.0);
}

std::string_view LsZLineReader::Next() {
    const std::size_t limit = kMostUnits * m_unitSize;
    std::string_view window;
    std::size_t length = 0;
    do {
        window = Buffered().substr(0, limit);
        length = LineLength(window);
    } while (length == std::string_view::npos && window.size() < limit && Refill());
    if (m_hasFailed) return {};
    window = Buffered().substr(0, limit);  // it was moved
    length = std::min(length, window.size());
    m_begin += length;
    m_given += length;
    return window.substr(0, length - length % m_unitSize);
}

}  // namespace quillon
