#pragma once

#include <cstdarg>
#include <optional>
#include <string>

namespace quillon {

/// Returns the text of an entry. Without the memory for it there is nothing, and one more lost line is
/// counted: an entry must not fail the operation that reports by it.
std::optional<std::string> EntryText(const char* format, std::va_list arguments) noexcept;

}  // namespace quillon
