#pragma once

#include <string>
#include <string_view>

namespace quillon::base {

/// Windows' names of files as UTF-8, and back. A name may hold units that UTF-8 has no place for, end in a
/// dot or a blank, which Windows leaves off when it reads a path, or be one that Windows takes for a device,
/// as "nul" or "com1.txt". Each of these units, and the first one of such a name, becomes the character
/// U+100000 + unit. Where a name has such a character of its own, both its units are escaped, so no two
/// names look alike. No escape becomes a separator or a NUL.

/// Returns a path or name with its lone surrogates escaped: valid UTF-8 that PathToWide() turns back.
std::string PathToUtf8(std::wstring_view path);
/// Does the same for one name that was found in a directory, whose last dot or blank, and the first letter of
/// a device's name, are escaped as well; "." and ".." stay.
std::string NameToUtf8(std::wstring_view name);
/// Returns a path or name in UTF-8 for Windows, with its escapes turned back; invalid UTF-8 becomes U+FFFD.
std::wstring PathToWide(std::string_view path);
/// Turns back the escapes in a path that is UTF-16 already.
std::wstring WithoutEscapes(std::wstring_view path);
/// Returns whether a path in UTF-16 has an escaped dot, blank or letter: Windows must not read anything into
/// it.
bool MustStayAsItIs(std::wstring_view path);

}  // namespace quillon::base
