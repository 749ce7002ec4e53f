#include "logging/ConsoleCopy.h"

#include <utility>

#include "base/OwnFigures.h"

namespace quillon {

using platform::StandardStream;
using platform::StreamUse;

ConsoleCopy::ConsoleCopy() : m_use(platform::UseOfStream(StandardStream::Output)) {}

void ConsoleCopy::Write(std::string_view line, std::int64_t second) noexcept {
    if (m_use == StreamUse::Closed) return;
    if (std::exchange(m_lookedAt, second) != second) {
        m_use = platform::UseOfStream(StandardStream::Output);
        if (m_use == StreamUse::Closed) return;
    }
    if (m_isLineTorn && platform::WriteToStream(StandardStream::Output, m_use, "\n") == 1)
        m_isLineTorn = false;
    const std::size_t taken = m_isLineTorn ? 0 : platform::WriteToStream(StandardStream::Output, m_use, line);
    if (taken == line.size()) return;
    m_isLineTorn = m_isLineTorn || taken > 0;
    base::TheLogFigures().droppedConsoleLines.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace quillon
