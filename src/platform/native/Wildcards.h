#pragma once

#include <string_view>

namespace quillon::platform {

/// Whether a file name matches the last element of a search pattern, by the
/// rules of the Windows file search: without regard to case, "*.*" is all names,
/// a final "." stands for the lack of an extension, "?" also for nothing before
/// a "." or the end. There are no short names. Both are UTF-8.
bool MatchesWildcards(std::string_view name, std::string_view pattern);

}  // namespace quillon::platform
