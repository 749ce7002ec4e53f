#pragma once

#include <string>
#include <string_view>

#include "quillon/Export.h"

namespace quillon {

/// Text that is put into WQL, so that it cannot become a part of the query. Texts are UTF-8. A
/// NUL cannot be escaped: a query with one is refused. Nothing is logged; the functions are
/// thread-safe.
///
/// @code
/// const std::string name = "O'Brien_1";
/// std::cout << "SELECT * FROM Win32_Service WHERE Name = " + WqlQuote(name) << '\n';
/// std::cout << "SELECT * FROM Win32_Service WHERE Name LIKE '" + WqlLikeEscape(name) + "%'" << '\n';
/// @endcode

/// Returns the text as it stands between quotes, single or double: each backslash and each
/// quote gets a backslash in front.
QUILLON_API std::string WqlEscape(std::string_view text);
/// Returns a whole literal: WqlEscape() between single quotes.
QUILLON_API std::string WqlQuote(std::string_view text);
/// Returns the text for the pattern of a LIKE that shall match exactly it: '%', '_' and '['
/// become "[%]", "[_]" and "[[]", the rest is as WqlEscape() gives it. It is to stand between
/// quotes, outside '[' and ']'.
QUILLON_API std::string WqlLikeEscape(std::string_view text);

}  // namespace quillon
