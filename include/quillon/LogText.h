#pragma once

#include <string>
#include <string_view>

#include "quillon/Export.h"

namespace quillon {

/// Makes text that is not the program's own fit for a log entry. Thread-safe; nothing is logged.
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
};

}  // namespace quillon
