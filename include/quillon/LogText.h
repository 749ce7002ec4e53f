#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quillon/Export.h"

namespace quillon {

/// Makes text that is not the program's own fit for a log entry or a terminal. Thread-safe; nothing is
/// logged.
///
/// @code
/// logger.Warn("Unknown user '%s'", LogText::OneLine(name).c_str());
/// @endcode
class QUILLON_API LogText {
public:
    LogText() = delete;

    /// Returns the text, UTF-8, with an escape in place of each character that could begin another line or
    /// steer a terminal: "\n", "\r", "\t", "\xHH" for other control characters, "\uHHHH" for line and
    /// paragraph separators and for marks that turn the direction of writing. All else stays, the backslash
    /// as well.
    static std::string OneLine(std::string_view text);
    /// Returns the text as valid UTF-8: U+FFFD stands for each maximal part that cannot be a character or
    /// its beginning, as Unicode recommends.
    static std::string RepairUtf8(std::string_view text);
    /// Returns the first `maximum` bytes of UTF-8, followed by "..." when the text was longer. A character
    /// that would be cut is left out.
    static std::string TruncateUtf8(std::string_view text, std::size_t maximum);
};

}  // namespace quillon
