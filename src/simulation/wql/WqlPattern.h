#pragma once

#include <string_view>

namespace quillon::simulation {

/// Whether a LIKE's pattern matches a whole text, without regard to ASCII case. '%' is
/// any text, '_' any unit, "[abc]" one of a set in which "a-f" and "a=f" are ranges,
/// "[^abc]" one that is not in it. A set that does not end is an ordinary '['; what
/// has a meaning outside a set has none in it. The cost is at most the product of the
/// lengths.
bool MatchesLike(std::wstring_view text, std::wstring_view pattern);

}  // namespace quillon::simulation
