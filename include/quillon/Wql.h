#pragma once

#include <string>
#include <string_view>

#include "quillon/Export.h"

namespace quillon {

/// Text that is put into WQL, so that it cannot become a part of the query. UTF-8. A
/// zero cannot be escaped: a query with one is refused.

/// The text as it stands between quotes: '\', '\'' and '"' get a '\' in front.
QUILLON_API std::string WqlEscape(std::string_view text);
/// A whole literal: WqlEscape() between single quotes.
QUILLON_API std::string WqlQuote(std::string_view text);
/// For the pattern of a LIKE that shall match exactly this text: '%', '_' and '[' lose
/// their meaning, and with it ']'; the rest is as WqlEscape() gives it. Stands between
/// quotes, outside '[' and ']'.
QUILLON_API std::string WqlLikeEscape(std::string_view text);

}  // namespace quillon
