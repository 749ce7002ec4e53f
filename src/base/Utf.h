#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillon::base {

/// Conversions between UTF-8 and UTF-16 (RFC 3629, RFC 2781), strict: overlong
/// forms, surrogates in UTF-8, lone surrogates in UTF-16 and values past U+10FFFF
/// are invalid. Wide strings hold one UTF-16 unit per wchar_t on every system. No
/// shared state, no lock.

std::optional<std::wstring> Utf8ToWide(std::string_view text);
std::optional<std::string> WideToUtf8(std::wstring_view text);
std::optional<std::u16string> Utf8ToUtf16(std::string_view text);
std::optional<std::string> Utf16ToUtf8(std::u16string_view text);

/// Converts to UTF-16 for system calls and texts that must not fail: an invalid sequence becomes U+FFFD.
std::wstring ToWide(std::string_view text);
std::string ToUtf8(std::wstring_view text);
/// Returns the text with every invalid sequence (its maximal subpart, Unicode 3.9) as U+FFFD.
std::string RepairUtf8(std::string_view text);
/// Returns the offset of the first byte that is not part of valid UTF-8; npos when all is valid.
std::size_t FindInvalidUtf8(std::string_view text);

/// Returns UTF-16 bytes of either order as UTF-8. Decoding stops before the first
/// invalid unit; an odd last byte is left out.
std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian);
/// Returns UTF-8 as UTF-16 bytes of either order; nothing when it is invalid.
std::optional<std::string> Utf8ToUtf16Bytes(std::string_view text, bool bigEndian);

}  // namespace quillon::base
