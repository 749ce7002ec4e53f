#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon {

/// Throws a TableFormatError about the place `offset` bytes into the caller's whole text. `unit` names
/// what `record` counts, "row" or "record".
[[noreturn]] void ThrowFormatError(std::string_view unit, std::size_t record, std::string_view text,
                                   std::size_t offset, const std::string& reason);

/// Throws a TableFormatError when the text begins with a byte-order mark of UTF-16.
void RefuseUtf16(std::string_view unit, std::string_view text);

/// Returns the text after its byte-order mark of UTF-8, if it has one.
std::string_view WithoutByteOrderMark(std::string_view text);

}  // namespace quillon
