#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// UTF-16 in the system's ANSI code page, which outside Windows is UTF-8; what the
/// page does not have becomes the system's default character, or U+FFFD.
std::string WideToAnsi(std::wstring_view text);
std::wstring AnsiToWide(const std::string& text);

/// Paths of the wide interface as library paths, and back. On Windows a lone surrogate, for which UTF-8 has
/// no place, is escaped, as are the last dot or blank of a name that was listed (base/PathEscapes.h).
std::string PathFromWide(std::wstring_view path);
std::wstring PathToWide(const std::string& path);

/// The text of a BSTR by its own count, so with its embedded zeros; null is the empty text.
std::wstring_view BstrText(BSTR text);

/// %NAME% references expanded, the text cut at its first zero; unknown names stay.
/// Nothing when the system cannot. The narrow form is in the ANSI code page.
std::optional<std::string> ExpandEnvironment(const std::string& text);
std::optional<std::wstring> ExpandEnvironment(const std::wstring& text);

/// More bytes than this LooksLikeUtf16() does not look at; an even number.
std::size_t Utf16SampleSize();
/// Whether bytes are likely to be little-endian UTF-16 without a byte-order mark,
/// by a statistical test: the system's, ours elsewhere.
bool LooksLikeUtf16(std::string_view bytes);

}  // namespace quillon::platform
