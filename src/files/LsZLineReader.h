#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/FileContent.h"

namespace quillon {

/// The lines of a content list, as bytes of its encoding.
class LsZLineReader {
public:
    /// Opens the list, a path in UTF-8, and looks for the mark FF FE.
    explicit LsZLineReader(const std::string& path);

    /// Otherwise see platform::LastError().
    bool IsOpen() const { return static_cast<bool>(m_file); }
    bool IsUnicode() const { return m_unitSize == 2; }

    /// The next line with its line feed, of at most 1,139 units; the rest of a longer one is
    /// the next line. Half a unit at the end is left out. Empty at the end. Valid until the next call.
    std::string_view Next();
    /// How much of the list the lines so far were, in (0, 1].
    double ShareRead() const;
    /// The list ended because it could not be read on.
    bool HasFailed() const { return m_hasFailed; }

private:
    std::string_view Buffered() const { return std::string_view(m_buffer).substr(m_begin, m_end - m_begin); }
    bool Refill();
    std::size_t LineLength(std::string_view window) const;

    platform::FileHandle m_file;
    std::optional<platform::BoundedReader> m_reader;
    std::size_t m_unitSize = 1;
    bool m_hasFailed = false;
    std::string m_buffer;
    std::size_t m_begin = 0, m_end = 0;
    std::uint64_t m_given = 0;  // bytes of the lines so far
};

}  // namespace quillon
